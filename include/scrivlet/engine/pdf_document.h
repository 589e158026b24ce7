// A PDF document parsed from its bytes.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/geometry.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace scrivlet {

class SCRIVLET_EXPORT QnPDFDocument {
 public:
  // Nothing when the bytes are not a readable PDF.
  static std::shared_ptr<QnPDFDocument> createWithData(const std::vector<uint8_t>& bytes);
  ~QnPDFDocument();

  int numberOfPages() const;
  // The media box of a page (from 0), in PDF points; the zero size for a page that is not there.
  QnSize pageSize(int page) const;

 private:
  struct Impl;
  explicit QnPDFDocument(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> impl_;
};

}  // namespace scrivlet
