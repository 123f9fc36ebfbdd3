// Stores a command line as JSON inside an application's own document, and reads it back.
#include <meridian/serialization/transcode_cli_arguments_json.h>

#include <iostream>

int main() {
  const meridian::TranscodeCliArguments arguments({"-preset", "solvane_4444xq", "-out", "/out/A001.mov"}, true);
  const nlohmann::ordered_json job{{"name", "A001"}, {"arguments", arguments}};
  const std::string stored = job.dump();
  std::cout << stored << '\n';

  try {
    const auto read = nlohmann::ordered_json::parse(stored)["arguments"].get<meridian::TranscodeCliArguments>();
    return read.commandLine() == arguments.commandLine() ? 0 : 1;
  } catch (const meridian::DecodingError& error) {
    std::cerr << error.path() << ": " << error.what() << '\n';
    return 1;
  }
}
