#pragma once
#include <string>

namespace CLI {
class App;
}

namespace cvn73100 {

// Shell completion scripts drawn from the command tree, so that they follow every command and option
// as they are declared: `shell` is "bash", "zsh" or "fish".
std::string CompletionScript(const CLI::App& app, const std::string& shell);

}  // namespace cvn73100
