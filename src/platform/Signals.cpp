#include "platform/Signals.h"

#include <csignal>

namespace {
volatile sig_atomic_t g_CloseRequested = 0;

void OnSignal(int) { g_CloseRequested = 1; }
}  // namespace

void InstallShutdownSignals() {
  struct sigaction sa = {};
  sa.sa_handler = OnSignal;
  sigemptyset(&sa.sa_mask);
  sigaction(SIGTERM, &sa, nullptr);
  sigaction(SIGINT, &sa, nullptr);
}

bool TakeCloseRequest() {
  if (!g_CloseRequested) return false;
  g_CloseRequested = 0;
  return true;
}

void RequestClose() { g_CloseRequested = 1; }
