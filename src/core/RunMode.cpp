#include "core/RunMode.h"

RunSettings SettingsFor(int mode, int appType) {
  const bool visualizerHost = appType >= APPTYPE_VisualizerFirst && appType <= APPTYPE_VisualizerLast;
  RunSettings s;
  s.timedScenes = mode == MODE_Preview || mode == MODE_FullScreen || mode == MODE_Test ||
                  (visualizerHost && mode == MODE_HostChild);
  s.alwaysAdvanceScenes = mode == MODE_Test || mode == MODE_Record;
  s.feedsSound = !visualizerHost;
  s.buildsCombinations = appType != APPTYPE_Editor && appType != APPTYPE_ConfigTool;
  s.statisticsAllowed = s.buildsCombinations;
  s.playsLayeredLists = mode == MODE_Test || mode == MODE_Record;
  s.recording = mode == MODE_Record;
  s.preview = mode == MODE_Preview;
  s.hostPresents = mode == MODE_HostDriven;
  s.showsFailures = mode != MODE_FullScreen;
  s.warmsUpDevice = s.timedScenes;
  return s;
}
