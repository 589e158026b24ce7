// The headless backend: a view, touches made from plain values and a run loop, for signing in tests,
// on servers and in programs without a screen.
#pragma once

#include <scrivlet/headless_run_loop.h>
#include <scrivlet/headless_touch.h>
#include <scrivlet/headless_view.h>
