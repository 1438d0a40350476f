#pragma once
// Movie files: pictures as the renderer reads them back (24-bit BGR rows from
// the bottom up, each padded to 4 bytes), optionally with sound. The file's
// ending picks the container: ".avi" (and anything unknown) gets lossless
// video with every frame a key frame and 16-bit PCM sound; ".mp4" and ".mkv"
// get H.264 when it is there (else MPEG-4) and AAC sound. A movie is complete
// once Finish has returned.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct MoviePicture {
  int width = 0, height = 0;
  int framesPerSecond = 25;
  const uint8_t *bgr = nullptr;  // ((width * 3 + 3) & ~3) * height bytes
};

class IMovieWriter {
 public:
  virtual ~IMovieWriter() = default;
  // Creates the file; false when it can't be written.
  virtual bool Create(const std::string &file) = 0;
  // Adds a sound stream of interleaved float samples; before the first frame.
  virtual void SetSound(int channels, int rate) = 0;
  // The first picture fixes size and rate; a picture of another size fails.
  virtual bool AddFrame(const MoviePicture &picture) = 0;
  virtual bool AddSound(const float *interleaved, int frames) = 0;
  // Flushes the encoders and closes the file.
  virtual bool Finish() = 0;
  virtual std::string ErrorText() const = 0;
};

std::unique_ptr<IMovieWriter> MakeMovieWriter();

// What a movie file holds, read back by decoding every packet.
struct MovieStream {
  char kind = '?';  // 'v' video, 'a' audio
  std::string codec;
  int64_t frames = 0;      // video frames, or audio samples per channel
  bool allKeyFrames = true;
  double rate = 0.0;       // frames or samples per second
  int width = 0, height = 0, channels = 0;
  std::vector<uint64_t> frameHashes;  // one per decoded video frame
};

// False when the file can't be opened as a movie.
bool ReadMovie(const std::string &file, std::vector<MovieStream> &streams);
