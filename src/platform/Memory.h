#pragma once
// How the process's heap treats large blocks.

// Large blocks (textures a software renderer keeps in our memory, pictures,
// meshes) are served from the heap and freed memory stays mapped, so that
// the next scene reuses pages already touched instead of faulting in fresh
// ones on its first frame. Call once, early in main.
void KeepFreedMemoryMapped();

