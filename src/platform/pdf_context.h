// A one-page vector PDF drawn through a drawing context, its bytes handed to a sink when it ends.
#pragma once

#include "platform/cg_context.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

typedef struct _cairo_surface cairo_surface_t;

namespace scrivlet {

class CairoContext;
class PdfContentStream;

class QnPDFContext {
 public:
  using Sink = std::function<void(const uint8_t* bytes, size_t count)>;

  // A page showing the media box (in PDF points, top-left origin): what is drawn at the box's origin
  // lands in the page's top-left corner. The creator goes into the document information when given;
  // the document is dated at the time given (seconds since the Unix epoch), or else by the clock now.
  QnPDFContext(QnRect mediaBox, Sink sink, const std::string& creator = {},
               std::optional<double> creationTime = std::nullopt);
  // Ends the document if end() was not called.
  ~QnPDFContext();
  QnPDFContext(const QnPDFContext&) = delete;
  QnPDFContext& operator=(const QnPDFContext&) = delete;

  // False when the size is unusable, the document could not be started, or (once ended) not finished.
  bool isValid() const;
  CGContext& context();
  // Finishes the document: the sink gets the rest of its bytes. Ending a document that could not be
  // made or finished says so in one line on standard error; the bytes the sink got are then no document.
  void end();

 private:
  void finish();

  Sink sink_;
  std::string bytes_;  // as cairo writes them
  // The shapes drawn before any text or image, written beneath cairo's page when it ends.
  std::unique_ptr<PdfContentStream> shapes_;
  QnSize pageSize_;
  bool valid_;
  bool ended_ = false;
  cairo_surface_t* surface_;
  std::unique_ptr<CairoContext> context_;
};

}  // namespace scrivlet
