#include "tools/meridian/command.h"

namespace meridian::command {

std::vector<Subcommand> allSubcommands() {
  return {parseCommand(),        renderCommand(),     explainCommand(),   setCommand(),       flagsCommand(),
          presetsCommand(),      extensionsCommand(), rateCommand(),      timecodeCommand(),  dimensionCommand(),
          filterCommand(),       freeNameCommand(),   cleanNameCommand(), transcodeCommand(), analyzeCommand(),
          analysisArgsCommand(), lutInfoCommand(),    lutSampleCommand(), lutApplyCommand(),  lutPlotCommand(),
          completionCommand(),   manualCommand()};
}

}  // namespace meridian::command
