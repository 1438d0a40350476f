#pragma once

// The running scene's clock and view shape, passed to every Update.
struct FrameInfo {
  float Time = 0.0f;        // seconds of scene run time
  float DeltaTime = 0.0f;   // seconds of this step
  float Aspect = 1.0f;      // width / height of the render unit that drew last
  float PrevAspect = 0.0f;  // Aspect at the update before
  bool Warmup = false;      // the scene is being fast-forwarded
  bool Restart = false;     // until the first step after a restart has finished
};
