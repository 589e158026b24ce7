// PDF documents on cairo's PDF surface.
#include "platform/pdf_context.h"

#include "platform/cairo_context.h"
#include "platform/clock.h"
#include "platform/format.h"
#include "platform/log.h"
#include "platform/pdf_content_stream.h"
#include "platform/pdf_page_splice.h"

#include <cairo-pdf.h>
#include <cairo.h>

#include <cmath>
#include <cstdio>
#include <ctime>

namespace scrivlet {

namespace {

cairo_status_t append(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

// Past this, cairo's fixed-point coordinates fail part way through a page (and leak on that path):
// such a page is refused before it is begun. No reader shows a page of a million points anyway.
constexpr double kLargestPageSide = 1e6;

bool usable(QnRect box) {
  return std::isfinite(box.origin.x) && std::isfinite(box.origin.y) && std::isfinite(box.size.width) &&
         std::isfinite(box.size.height) && box.size.width > 0 && box.size.height > 0 &&
         box.size.width <= kLargestPageSide && box.size.height <= kLargestPageSide;
}

}  // namespace

QnPDFContext::QnPDFContext(QnRect mediaBox, Sink sink, const std::string& creator, std::optional<double> creationTime)
    : sink_(std::move(sink)), pageSize_(mediaBox.size), valid_(usable(mediaBox)) {
  // An unusable document still hands out a context, one that draws nowhere.
  surface_ = valid_ ? cairo_pdf_surface_create_for_stream(append, &bytes_, mediaBox.size.width,
                                                          mediaBox.size.height)
                    : cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 0, 0);
  valid_ = valid_ && cairo_surface_status(surface_) == CAIRO_STATUS_SUCCESS;
  if (valid_ && !creator.empty())
    cairo_pdf_surface_set_metadata(surface_, CAIRO_PDF_METADATA_CREATOR, creator.c_str());
  // Dated by the time given or the system's clock rather than the wall clock cairo would read: the
  // same strokes at the same time give the same bytes.
  if (valid_ && std::isfinite(creationTime.value_or(0))) {
    std::time_t now = std::time_t(std::floor(creationTime.value_or(QnClock::now())));
    std::tm utc{};
    char date[32];
    if (gmtime_r(&now, &utc) && std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%SZ", &utc))
      cairo_pdf_surface_set_metadata(surface_, CAIRO_PDF_METADATA_CREATE_DATE, date);
  }
  cairo_t* cr = cairo_create(surface_);
  if (valid_) cairo_translate(cr, -mediaBox.origin.x, -mediaBox.origin.y);
  context_ = std::make_unique<CairoContext>(cr);
  cairo_destroy(cr);
  if (valid_) {
    shapes_ = std::make_unique<PdfContentStream>(mediaBox.size.height);
    context_->writeShapesTo(shapes_.get());
  }
}

QnPDFContext::~QnPDFContext() {
  finish();
  context_.reset();
  cairo_surface_destroy(surface_);
}

bool QnPDFContext::isValid() const { return valid_; }

CGContext& QnPDFContext::context() { return *context_; }

void QnPDFContext::end() {
  if (!ended_ && !valid_)
    logLine(cformat("Scrivlet: no PDF: a page of %g x %g points cannot be made", pageSize_.width,
                    pageSize_.height));
  finish();
}

void QnPDFContext::finish() {
  if (ended_) return;
  ended_ = true;
  // Drawing state goes first so that the surface can write out everything.
  cairo_surface_flush(surface_);
  cairo_surface_finish(surface_);
  // cairo may fail part way (a page too large for its numbers): what it wrote is no document.
  if (valid_ && cairo_surface_status(surface_) != CAIRO_STATUS_SUCCESS) {
    valid_ = false;
    logLine(cformat("Scrivlet: no PDF: a page of %g x %g points could not be finished (%s)", pageSize_.width,
                    pageSize_.height, cairo_status_to_string(cairo_surface_status(surface_))));
  }
  if (valid_ && !shapes_->empty()) {
    std::string content = shapes_->deflated();
    std::optional<std::string> spliced =
        content.empty() ? std::nullopt : drawBeneathFirstPage(bytes_, content, shapes_->opacities());
    if (spliced) {
      bytes_ = std::move(*spliced);
    } else {
      valid_ = false;
      logLine(cformat("Scrivlet: no PDF: the ink of a page of %g x %g points could not be written",
                      pageSize_.width, pageSize_.height));
    }
  }
  if (sink_) sink_(reinterpret_cast<const uint8_t*>(bytes_.data()), bytes_.size());
  bytes_.clear();
}

}  // namespace scrivlet
