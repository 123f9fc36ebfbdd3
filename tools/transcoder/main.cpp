// The transcoder as applications start it: with an argument vector and nothing else.
#include "tools/meridian/program.h"
#include "tools/meridian/transcoding.h"

namespace meridian::command {
namespace {

constexpr std::string_view programName = "meridian-transcoder";

/// Transcodes. What people try first, which no vector has, gives the listing that is meant.
Status runTranscoder(std::span<const std::string_view> words) {
  if (words.empty()) throw UsageError("no arguments are given; -h prints the usage");
  constexpr std::string_view usage = SAVCliHelpFlag.rawValue();
  constexpr std::string_view version = SAVCliVersionFlag.rawValue();
  if (words.size() == 1 && words.front() == "--help") words = {&usage, 1};
  if (words.size() == 1 && words.front() == "--version") words = {&version, 1};
  return transcode(words, {.program = programName});
}

}  // namespace
}  // namespace meridian::command

int main(int argc, char** argv) {
  using namespace meridian::command;
  return runProgram(programName, argc, argv, runTranscoder);
}
