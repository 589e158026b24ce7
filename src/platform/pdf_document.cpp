// A PDF's pages and their sizes, read with qpdf.
#include <scrivlet/engine/pdf_document.h>

#ifndef POINTERHOLDER_TRANSITION
#define POINTERHOLDER_TRANSITION 4  // qpdf hands out std::shared_ptr
#endif
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>

#include <cmath>
#include <exception>

namespace scrivlet {

namespace {

// A page without a usable media box is US Letter, as PDF readers show it.
constexpr QnSize kDefaultPageSize{612, 792};

QnSize mediaBoxSize(QPDFPageObjectHelper& page) {
  QPDFObjectHandle box = page.getMediaBox();
  if (!box.isRectangle()) return kDefaultPageSize;
  QPDFObjectHandle::Rectangle r = box.getArrayAsRectangle();
  QnSize size{std::fabs(r.urx - r.llx), std::fabs(r.ury - r.lly)};
  return std::isfinite(size.width) && std::isfinite(size.height) ? size : kDefaultPageSize;
}

}  // namespace

struct QnPDFDocument::Impl {
  std::vector<QnSize> pageSizes;  // read once: the document holds no parser afterwards
};

QnPDFDocument::QnPDFDocument(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
QnPDFDocument::~QnPDFDocument() = default;

std::shared_ptr<QnPDFDocument> QnPDFDocument::createWithData(const std::vector<uint8_t>& bytes) {
  if (bytes.empty()) return nullptr;
  auto impl = std::make_unique<Impl>();
  // qpdf reports a file it cannot read, or one locked by a password, by throwing: it stops here.
  try {
    QPDF pdf;
    pdf.setSuppressWarnings(true);
    pdf.processMemoryFile("PDF data", reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (QPDFPageObjectHelper& page : QPDFPageDocumentHelper(pdf).getAllPages())
      impl->pageSizes.push_back(mediaBoxSize(page));
  } catch (const std::exception&) {
    return nullptr;
  }
  return std::shared_ptr<QnPDFDocument>(new QnPDFDocument(std::move(impl)));
}

int QnPDFDocument::numberOfPages() const { return static_cast<int>(impl_->pageSizes.size()); }

QnSize QnPDFDocument::pageSize(int page) const {
  if (page < 0 || page >= numberOfPages()) return {};
  return impl_->pageSizes[page];
}

}  // namespace scrivlet
