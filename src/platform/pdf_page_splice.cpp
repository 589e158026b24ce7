// The splice, on qpdf: a new content stream first in the page's list, written out unchanged otherwise.
#include "platform/pdf_page_splice.h"

#ifndef POINTERHOLDER_TRANSITION
#define POINTERHOLDER_TRANSITION 4  // qpdf hands out std::shared_ptr
#endif
#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

namespace scrivlet {

std::optional<std::string> drawBeneathFirstPage(const std::string& pdf, const std::string& deflatedContent,
                                                const std::vector<double>& opacities) {
  try {
    QPDF document;
    document.setSuppressWarnings(true);
    document.processMemoryFile("page", pdf.data(), pdf.size());
    std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(document).getAllPages();
    if (pages.empty()) return std::nullopt;
    QPDFPageObjectHelper& page = pages.front();

    QPDFObjectHandle content = QPDFObjectHandle::newStream(&document);
    content.replaceStreamData(deflatedContent, QPDFObjectHandle::newName("/FlateDecode"),
                              QPDFObjectHandle::newNull());
    page.addPageContents(content, true);

    if (!opacities.empty()) {
      QPDFObjectHandle resources = page.getAttribute("/Resources", true);
      if (!resources.isDictionary()) {
        resources = QPDFObjectHandle::newDictionary();
        page.getObjectHandle().replaceKey("/Resources", resources);
      }
      QPDFObjectHandle states = resources.getKey("/ExtGState");
      if (!states.isDictionary()) {
        states = QPDFObjectHandle::newDictionary();
        resources.replaceKey("/ExtGState", states);
      }
      for (size_t i = 0; i < opacities.size(); ++i) {
        QPDFObjectHandle state = QPDFObjectHandle::newDictionary();
        state.replaceKey("/Type", QPDFObjectHandle::newName("/ExtGState"));
        state.replaceKey("/ca", QPDFObjectHandle::newReal(opacities[i], 6));
        state.replaceKey("/CA", QPDFObjectHandle::newReal(opacities[i], 6));
        states.replaceKey("/sa" + std::to_string(i), state);
      }
    }

    QPDFWriter writer(document);
    writer.setOutputMemory();
    // Streams stay as they are: compressing them again is what this splice exists to avoid.
    writer.setDecodeLevel(qpdf_dl_none);
    writer.setDeterministicID(true);
    writer.write();
    std::shared_ptr<Buffer> out = writer.getBufferSharedPointer();
    return std::string(reinterpret_cast<const char*>(out->getBuffer()), out->getSize());
  } catch (...) {  // qpdf's exceptions, whatever their type
    return std::nullopt;
  }
}

}  // namespace scrivlet
