// meridian completion: a shell's completion script.
#include <iostream>

#include "tools/meridian/command.h"
#include "tools/meridian/completion_scripts.h"

namespace meridian::command {

Subcommand completionCommand() {
  return {
      .name = "completion",
      .description = "Print the completion script for a shell",
      .details =
          "The scripts are installed with the command, where the shells look for them. Otherwise print them into\n"
          "~/.local/share/bash-completion/completions/meridian, a directory of zsh's fpath as _meridian, or\n"
          "~/.config/fish/completions/meridian.fish; or source them.",
      .example =
          "source <(meridian completion bash)\n"
          "source <(meridian completion zsh)\n"
          "meridian completion fish | source",
      .options =
          {{Option::Kind::positional, "shell", "The shell: bash, zsh or fish", "SHELL", {"bash", "zsh", "fish"}}},
      .action =
          [](const Arguments& arguments) {
            const std::string shell = *arguments.value("shell");
            if (shell == "bash") std::cout << bashCompletion();
            if (shell == "zsh") std::cout << zshCompletion();
            if (shell == "fish") std::cout << fishCompletion();
            return done;
          },
  };
}

}  // namespace meridian::command
