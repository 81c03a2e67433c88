#pragma once

#include "System/Completion.h"
