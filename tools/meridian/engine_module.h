/// \file
/// The engine, which describes and transcodes media, as the programs reach it. For example:
///
///     const EngineModule& engine = engineModule();
///     if (const auto listing = engine.listing(explanation)) std::cout << *listing;
#pragma once

#include <optional>
#include <string>

#include "meridian/cli/transcode_explanation.h"

namespace meridian::command {

/// The functions of the engine. It is a module of its own because FFmpeg brings 160 libraries, which take longer to
/// load than any other subcommand takes to run. A function may be called from several threads at once.
struct EngineModule {
  /// Returns what the listing commands of the words print; absent without any.
  std::optional<std::string> (*listing)(const TranscodeExplanation& words);
};

/// The name of the function that returns the module's EngineModule.
inline constexpr const char* engineModuleEntry = "meridianEngineModule";

/// Returns the engine: loaded at the first call by the command, and linked into the programs that always need it.
/// Throws CommandError if the command has no such module, or if it cannot be loaded.
[[nodiscard]] const EngineModule& engineModule();

}  // namespace meridian::command

/// Returns the engine's functions; what `engineModuleEntry` names.
extern "C" const meridian::command::EngineModule* meridianEngineModule();
