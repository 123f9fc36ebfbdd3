// Transcodes a clip to a proxy, and tells how far it is.
#include <meridian/cli/transcode_explanation.h>
#include <meridian/engine/survey_transcode.h>
#include <meridian/engine/transcode.h>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: transcode_clip CLIP PROXY.mov\n", stderr);
    return 2;
  }
  using namespace meridian;
  const auto plan = planTranscode(explain({"-in_0_0", argv[1], "-out", argv[2], "-preset", "solvane_cloud"}));
  if (!plan) {
    for (const TranscodePlanError& error : plan.error()) std::fprintf(stderr, "%s\n", error.message().c_str());
    return 1;
  }
  const auto result = transcode(*plan, {.progress = [](const TranscodeProgress& progress) {
    std::fprintf(stderr, "\r%3.0f %%", progress.portion * 100);
  }});
  std::fputc('\n', stderr);
  if (!result) {
    std::fprintf(stderr, "%s\n", result.error().message().c_str());
    return 1;
  }
  std::printf("%s: %lld frames, %.2f s\n", result->path.c_str(), static_cast<long long>(result->frames),
              result->seconds);
  return 0;
}
