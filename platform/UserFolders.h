#pragma once
#include <string>

namespace cvn73100 {

// The user's home folder: $HOME, or the password database's entry when HOME is unset or empty; "" when
// neither names one.
std::string HomeFolder();

// Where the user's configuration lives: $XDG_CONFIG_HOME, else the home folder's .config; "" when there is
// no home folder.
std::string ConfigFolder();

}  // namespace cvn73100
