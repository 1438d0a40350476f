// velmor-tool record: renders a scene, project or layered list to a sound
// track, frame by frame on a clock of its own, into a movie whose sound is
// the track. Slow scenes take longer; they never drop a frame.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "core/Log.h"
#include "core/Random.h"
#include "platform/SoundFileSource.h"
#include "scene/SceneBase.h"
#include "tool/ToolCommand.h"
#include "tool/ToolScene.h"
#include "tool/ToolSound.h"
#include "tool/ToolWindow.h"

namespace {
constexpr int kMaxFps = 240;
constexpr double kMaxSeconds = 4 * 3600.0;

int Usage() {
  fprintf(stderr,
          "usage: velmor-tool record FILE --audio TRACK [--size WxH] [--fps F] [--seconds S] [--seed N] -o OUT\n"
          "  OUT.avi: lossless video (FFV1, every frame a key frame) and 16-bit PCM sound\n"
          "  OUT.mp4, OUT.mkv: H.264 video and AAC sound\n"
          "  --no-movie: draw every frame but write nothing (what the drawing alone costs)\n");
  return 2;
}

// The track as the movie's sound: what the file gives up to a time, pulled
// in the packets the analysis would hear.
class CTrack {
 public:
  explicit CTrack(const std::string &path) : m_Source(path, [this] { return m_Now; }) {}
  bool Start() { return static_cast<bool>(m_Source.Start(m_Format)); }
  double Seconds() const { return static_cast<double>(m_Source.OutputFrames()) / CSoundFileSource::OutputRate; }
  int Channels() const { return m_Format.channels; }
  // Everything up to `seconds` into the track that wasn't handed out yet.
  const std::vector<float> &Until(double seconds) {
    m_Samples.clear();
    m_Now = seconds;
    uint32_t frames = 0;
    while (m_Source.GetNextPacketSize(frames) && frames > 0) {
      SoundPacket packet;
      if (!m_Source.GetBuffer(packet)) break;
      const size_t n = static_cast<size_t>(packet.frames) * static_cast<size_t>(m_Format.channels);
      if (packet.silent || !packet.data)
        m_Samples.insert(m_Samples.end(), n, 0.0f);
      else
        m_Samples.insert(m_Samples.end(), packet.data, packet.data + n);
      m_Source.ReleaseBuffer(packet.frames);
    }
    return m_Samples;
  }

 private:
  double m_Now = 0.0;
  CSoundFileSource m_Source;
  SoundMixFormat m_Format;
  std::vector<float> m_Samples;
};

// "frame 120/900  41.3 fps  19 s left", rewritten in place about twice a
// second, and a line for each scene that starts.
class CProgress {
 public:
  explicit CProgress(int total) : m_Total(total) {}
  void Frame(int done) {
    const auto now = std::chrono::steady_clock::now();
    if (done < m_Total && now - m_Shown < std::chrono::milliseconds(500)) return;
    m_Shown = now;
    const double seconds = std::chrono::duration<double>(now - m_Start).count();
    const double rate = seconds > 0.0 ? done / seconds : 0.0;
    const double left = rate > 0.0 ? (m_Total - done) / rate : 0.0;
    fprintf(stderr, "\rframe %d/%d  %.1f fps  %.0f s left ", done, m_Total, rate, left);
    if (done == m_Total) fprintf(stderr, "\n");
  }
  // "scene NAME at 12.3 s": where a project's scene changes fall in the movie.
  void Scene(const std::string &name, double at) { fprintf(stderr, "\rscene %s at %.1f s\n", name.c_str(), at); }

 private:
  int m_Total;
  std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now(), m_Shown{};
};

int RunRecord(int argc, char **argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  std::string track, out, size = "640x480", fpsText = "30", secondsText, seed = "1";
  if (!TakeOption(args, "--audio", track) || !TakeOption(args, "-o", out)) return Usage();
  TakeOption(args, "--size", size);
  TakeOption(args, "--fps", fpsText);
  TakeOption(args, "--seconds", secondsText);
  TakeOption(args, "--seed", seed);
  const auto noMovie = std::find(args.begin(), args.end(), "--no-movie");
  const bool writing = noMovie == args.end();
  if (!writing) args.erase(noMovie);
  int width = 0, height = 0;
  const int fps = atoi(fpsText.c_str());
  if (args.size() != 1 || sscanf(size.c_str(), "%dx%d", &width, &height) != 2 || width < 2 || height < 2 ||
      width > 8192 || height > 8192 || fps < 1 || fps > kMaxFps)
    return Usage();
  // A fixed seed by default: the same command gives the same movie.
  SeedSharedRandom(static_cast<uint32_t>(strtoul(seed.c_str(), nullptr, 0)));

  CTrack sound(track);
  CToolSound analysis;
  std::vector<std::string> audioOption{"--audio", track};
  if (!sound.Start() || !analysis.TakeOption(audioOption)) {
    fprintf(stderr, "velmor-tool: can't play \"%s\"\n", track.c_str());
    return 1;
  }
  const double seconds = std::clamp(secondsText.empty() ? sound.Seconds() : atof(secondsText.c_str()), 0.0, kMaxSeconds);
  const int frames = static_cast<int>(std::ceil(seconds * fps - 1e-9));
  if (frames < 1) return Usage();

  CToolErrors log;
  CToolEngine tool;
  if (!tool.Load(args[0]) || !tool.engine.m_ActiveScene) {
    for (const std::string &e : log.errors) fprintf(stderr, "%s: %s\n", args[0].c_str(), e.c_str());
    return 1;
  }
  // A project changes scenes as it does live, on the movie's clock; the
  // analysis hears the track at that clock.
  tool.engine.m_AutoGotoNextScene = true;
  double clock = 0.0;
  tool.engine.m_UpdateSound = [&] { analysis.AdvanceTo(clock); };

  CToolWindow window(tool.engine);
  if (!window.Open(width, height, "velmor-tool record")) return 1;
  CScreenshot &movie = window.render.m_Screenshot;
  if (writing && !movie.BeginMovie(out, sound.Channels(), CSoundFileSource::OutputRate)) {
    for (const std::string &e : log.errors) fprintf(stderr, "velmor-tool: %s\n", e.c_str());
    return 1;
  }
  // Steps of at most a thirtieth, as the program takes them live.
  const int steps = std::max(1, static_cast<int>(std::ceil(30.0 / fps)));
  const float step = 1.0f / static_cast<float>(fps * steps);
  CProgress progress(frames);
  const CSceneBase *shown = nullptr;
  for (int i = 0; i < frames && (movie.MovieGood() || !writing); ++i) {
    for (int s = 0; s < steps; ++s) {
      tool.engine.Update(step);
      clock += step;
    }
    if (tool.engine.m_ActiveScene != shown && (shown = tool.engine.m_ActiveScene))
      progress.Scene(shown->GetName(), clock);
    window.render.Render3DEnvironment(false);
    progress.Frame(i + 1);
    if (!writing) continue;
    movie.AddMovieFrame(fps);
    const std::vector<float> &samples = sound.Until(std::min(seconds, (i + 1.0) / fps));
    movie.AddMovieSound(samples.data(), static_cast<int>(samples.size() / static_cast<size_t>(sound.Channels())));
  }
  const bool written = movie.MovieGood() || !writing;
  movie.EndMovie();
  for (const std::string &e : log.errors) fprintf(stderr, "%s: %s\n", args[0].c_str(), e.c_str());
  if (!written) return 1;
  printf("%s\n", out.c_str());
  return 0;
}
}  // namespace

VELMOR_TOOL_COMMAND(record, "record", 5,
                    "FILE --audio TRACK [--size WxH] [--fps F] [--seconds S] [--seed N] [--no-movie] -o OUT",
                    "render a scene or project to a sound track, frame by frame, into a movie with the track as its sound",
                    RunRecord);
