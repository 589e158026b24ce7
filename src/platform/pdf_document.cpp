// PDF parsing with poppler.
#include <scrivlet/pdf_document.h>

#include <poppler-document.h>
#include <poppler-page.h>

namespace scrivlet {

struct QnPDFDocument::Impl {
  std::unique_ptr<poppler::document> document;
};

QnPDFDocument::QnPDFDocument(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
QnPDFDocument::~QnPDFDocument() = default;

std::shared_ptr<QnPDFDocument> QnPDFDocument::createWithData(const std::vector<uint8_t>& bytes) {
  if (bytes.empty()) return nullptr;
  poppler::byte_array data(bytes.begin(), bytes.end());
  std::unique_ptr<poppler::document> document(poppler::document::load_from_data(&data));
  if (!document || document->is_locked()) return nullptr;
  auto impl = std::make_unique<Impl>();
  impl->document = std::move(document);
  return std::shared_ptr<QnPDFDocument>(new QnPDFDocument(std::move(impl)));
}

int QnPDFDocument::numberOfPages() const { return impl_->document->pages(); }

QnSize QnPDFDocument::pageSize(int page) const {
  if (page < 0 || page >= numberOfPages()) return {};
  std::unique_ptr<poppler::page> p(impl_->document->create_page(page));
  if (!p) return {};
  poppler::rectf box = p->page_rect(poppler::media_box);
  return {box.width(), box.height()};
}

}  // namespace scrivlet
