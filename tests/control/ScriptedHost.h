#pragma once
#include "tests/support/ScriptedHost.h"
