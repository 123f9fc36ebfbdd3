// What the command shows without words: a realistic command line, explained and rendered, and a LUT applied to an
// image.
#include <array>
#include <iostream>

#include "meridian/cli/transcode_cli_arguments.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"
#include "tools/meridian/shell_words.h"

namespace meridian::command {
namespace {

// Two clips of a camera card, a preset with two of its settings overridden, a repeated flag, a flag in capitals, a
// misspelt flag, a switch that consumes a word, and a stray word.
constexpr auto exampleWords = std::to_array<std::string_view>({
    "-in_0_0",       "/Volumes/A001_C002/CLIPS/A001C001_261121_R4TB.mov",
    "-in_0_1",       "/Volumes/A001_C002/CLIPS/A001C002_261121_R4TB.mov",
    "-out",          "/Volumes/Proxies/A001_C002.mov",
    "-preset",       "solvane_cloud",
    "-VCODEC",       "ProRes422Proxy",
    "-vr",           "25",
    "-dims",         "1280x720",
    "-vr",           "23.976",
    "-clut",         "/Looks/Show Rec709.cube",
    "-tc_brun_size", "36",
    "-tc_burn",      "-overwrite",
    "Yes",           "please",
});

}  // namespace

void demonstrate() {
  std::cout << styled(Style::heading, "A transcoder's command line as an application might write it") << "\n\n";
  std::cout << "  meridian explain --";
  for (const std::string_view word : exampleWords) {
    std::cout << (word.starts_with('-') ? " \\\n    " : " ") << shellQuoted(word);
  }
  std::cout << "\n\n" << styled(Style::heading, "How it is read") << "\n\n";
  printExplanation(explain(exampleWords), exampleWords.size());

  std::cout << '\n' << styled(Style::heading, "The same, rendered for the transcoder") << "\n\n  transcoder";
  const std::vector<std::string> vector = TranscodeCliArguments(exampleWords, true).commandLine();
  for (std::size_t i = 0; i < vector.size(); i += 2) {
    std::cout << " \\\n    " << shellQuoted(vector[i]) << ' ' << shellQuoted(vector[i + 1]);
  }
  std::cout << "\n\n";
  demonstrateLut();
  std::cout << "\nmeridian --help lists all commands.\n";
}

}  // namespace meridian::command
