#pragma once

#include "shell/TLMainObject.h"

// The one root object, made at its first use.
TLMainObject& TLMain();
