// The controller's vector artwork, QnScrivletStyleKit. The exports draw its padlock too, and they sit
// below the controller, so it is defined with the stroke renderer.
#pragma once

#include "render/style_kit.h"
