// Kept for hosts written before 1.1: the engine's headers are under <scrivlet/engine/>.
#pragma once
#include <scrivlet/engine/delegate.h>
