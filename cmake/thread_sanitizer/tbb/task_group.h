#pragma once

#include "stand_in.h"
