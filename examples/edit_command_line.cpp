// Reads a transcoder command line, edits it, and prints the argument vector for the transcoder.
#include <meridian/cli/transcode_cli_arguments.h>

#include <iostream>

int main() {
  meridian::TranscodeCliArguments arguments(
      {"-preset", "solvane_cloud", "-dims", "1920x1080", "-out", "/out/A001.mov", "-fooo", "1"}, true);

  arguments.enumerateUnknownFlags(
      [](std::string_view flag, std::string_view value) { std::cerr << "unknown: " << flag << ' ' << value << '\n'; });

  arguments.setInputFiles(std::vector<std::string>{"/card/A001C001.mov", "/card/A001C002.mov"});
  arguments.setOutputFileFormat(meridian::SAVMp4Format);
  arguments.setShouldOverwrite(true);

  for (const std::string& element : arguments.commandLine()) std::cout << '[' << element << "]\n";
}
