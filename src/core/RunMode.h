#pragma once
// What the process was started to do and who hosts it, defined once for
// every layer. The host turns the two into RunSettings at start (and when
// its mode changes); engine and renderer read those plain facts and never
// look at a mode themselves.

enum AppMode {
  MODE_Config = 0,
  MODE_Preview = 1,
  MODE_FullScreen = 2,
  MODE_Test = 3,
  MODE_Password = 4,
  MODE_HostChild = 5,
  MODE_Record = 6,
  MODE_Screenshot = 7,
  MODE_HostDriven = 8,
};

enum AppType {
  APPTYPE_Default = 0,
  APPTYPE_Screensaver = 1,
  APPTYPE_Editor = 5,
  APPTYPE_ConfigTool = 6,
  APPTYPE_VisualizerFirst = 7,
  APPTYPE_VisualizerLast = 9,
};

struct RunSettings {
  // Scenes change on their run time and when too slow.
  bool timedScenes = true;
  // Scene changes are on whatever the configuration says (test window,
  // recording: the point is to see them all).
  bool alwaysAdvanceScenes = false;
  // The engine pulls the sound analysis itself; a visualizer host feeds it.
  bool feedsSound = true;
  // Layer pools become combinations when a project loads; an editor edits
  // the pools as they are.
  bool buildsCombinations = true;
  // Scene statistics are kept and may be sent.
  bool statisticsAllowed = true;
  // A file named on the command line may be a layered list "a;b;c" that
  // plays alone (test window, recording).
  bool playsLayeredLists = false;
  // A recording: fixed clock, movie; any named file is a scene document
  // unless it is a project.
  bool recording = false;
  // Drawing inside a window someone else owns.
  bool preview = false;
  // The host owns window and swap: no windows, no present.
  bool hostPresents = false;
  // Failures are shown to the user (on stderr) as well as logged; full
  // screen has nobody looking at a terminal.
  bool showsFailures = true;
  // Scenes switch while somebody watches: the renderer makes at start what
  // a driver would otherwise make on the first frame of a scene.
  bool warmsUpDevice = false;
};

RunSettings SettingsFor(int mode, int appType);
