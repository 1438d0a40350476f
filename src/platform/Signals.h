#pragma once
// SIGTERM and SIGINT (how a desktop's saver or a terminal ends us) become a
// close request that the message queue delivers as WM_CLOSE, so shutdown
// takes the same path as closing the window.

void InstallShutdownSignals();
// True once per signal received since the last call.
bool TakeCloseRequest();
// What a signal handler does; callable from tests.
void RequestClose();
