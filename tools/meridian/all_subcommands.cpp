#include "tools/meridian/command.h"

namespace meridian::command {

std::vector<Subcommand> allSubcommands() {
  return {parseCommand(),        renderCommand(),     explainCommand(),    setCommand(),         flagsCommand(),
          presetsCommand(),      extensionsCommand(), rateCommand(),       timecodeCommand(),    dimensionCommand(),
          filterCommand(),       freeNameCommand(),   cleanNameCommand(),  transcodeCommand(),   analyzeCommand(),
          analysisArgsCommand(), lutInfoCommand(),    lutSampleCommand(),  lutApplyCommand(),    lutPlotCommand(),
          farmSubmitCommand(),   farmStatusCommand(), farmCancelCommand(), farmSummaryCommand(), completionCommand(),
          manualCommand()};
}

}  // namespace meridian::command
