#include "tests/engine/made_media.h"

#include <unistd.h>

#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/support/process.h"

namespace meridian::test {

bool isInstalled(const std::string& program) {
  const char* const searched = std::getenv("PATH");
  if (searched == nullptr) return false;
  std::istringstream folders(searched);
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (access((std::filesystem::path(folder) / program).c_str(), X_OK) == 0) return true;
  }
  return false;
}

void MadeMedia::make(const std::vector<Recipe>& recipes) {
  std::vector<std::string> command{"ffmpeg", "-v", "error", "-nostdin", "-y"};
  for (const char* const input :
       {"testsrc2=size=64x36:rate=60:duration=0.25", "sine=sample_rate=48000:duration=0.25"}) {
    command.insert(command.end(), {"-f", "lavfi", "-i", input});
  }
  for (const Recipe& recipe : recipes) {
    std::istringstream options(recipe.options);
    command.insert(command.end(), std::istream_iterator<std::string>(options), {});
    command.insert(command.end(), {"-threads", "1", "file:" + path(recipe.name)});
  }
  const Outcome outcome = run(command);
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
}

std::string MadeMedia::content(const std::string& name) const {
  std::ifstream file(path(name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

MediaDescription MadeMedia::described(const std::string& name) const {
  auto description = describeMedia(Url::fromFilePath(path(name)));
  if (description) return *std::move(description);
  ADD_FAILURE() << description.error().message();
  return {};
}

void putBigEndian(std::string& bytes, std::size_t place, std::uint32_t number) {
  for (std::size_t each = 0; each < 4; ++each) bytes.at(place + each) = static_cast<char>(number >> (24 - 8 * each));
}

}  // namespace meridian::test
