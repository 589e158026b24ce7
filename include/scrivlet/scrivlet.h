// Everything a host uses of Scrivlet.
#pragma once

#include <scrivlet/color.h>
#include <scrivlet/controls.h>
#include <scrivlet/delegate.h>
#include <scrivlet/device.h>
#include <scrivlet/facade.h>
#include <scrivlet/geometry.h>
#include <scrivlet/gesture_recognizer.h>
#include <scrivlet/headless.h>
#include <scrivlet/load_error.h>
#include <scrivlet/navigation_controller.h>
#include <scrivlet/notification_center.h>
#include <scrivlet/pdf_document.h>
#include <scrivlet/popup.h>
#include <scrivlet/record_file.h>
#include <scrivlet/record_renderer.h>
#include <scrivlet/scheduler.h>
#include <scrivlet/scrivlet_controller.h>
#include <scrivlet/signature.h>
#include <scrivlet/signature_point.h>
#include <scrivlet/signature_session.h>
#include <scrivlet/stroke_json.h>
#include <scrivlet/time_series_import.h>
#include <scrivlet/touch.h>
#include <scrivlet/version.h>
#include <scrivlet/view.h>
