// The running program's host channel: one line a frame, answered to the
// client that sent it with the replies of the frame it ran in.
#include "app/HostChannel.h"

#include <gtest/gtest.h>

#include <deque>
#include <utility>
#include <vector>

namespace {
struct FakeChannel : ILineChannel {
  std::deque<Line> incoming;
  std::vector<std::pair<int, std::string>> *answers;
  explicit FakeChannel(std::vector<std::pair<int, std::string>> *out) : answers(out) {}
  bool Poll(Line &line) override {
    if (incoming.empty()) return false;
    line = incoming.front();
    incoming.pop_front();
    return true;
  }
  void Answer(int client, const std::string &text) override { answers->emplace_back(client, text); }
};
}  // namespace

TEST(HostChannel, EachLineRunsInAFrameOfItsOwnAndIsAnsweredToItsSender) {
  std::vector<std::pair<int, std::string>> answers;
  auto fake = std::make_unique<FakeChannel>(&answers);
  fake->incoming = {{7, "<c><A/><B/></c>", false}, {9, "", true}, {7, "<c><A", false}};
  CHostChannel channel(std::move(fake));
  CScriptEngineRef commands;
  for (int frame = 0; frame < 4; ++frame) {
    channel.BeforeUpdate();
    commands->Run();
    channel.AfterUpdate();
  }
  const std::vector<std::pair<int, std::string>> expected = {
      {7, "<vms><A Error=\"Unknown command\" /><B Error=\"Unknown command\" /></vms>"},
      {9, "<vms><Request Error=\"Line too long\" /></vms>"},
      {7, "<vms><Request Error=\"Malformed XML\" /></vms>"},
  };
  EXPECT_EQ(answers, expected);
}
