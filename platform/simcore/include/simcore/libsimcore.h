#pragma once

// Everything that the system imports of the device library.
#include "simcore/flat.h"
#include "simcore/founder.h"
#include "simcore/records.h"
