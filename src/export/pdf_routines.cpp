// The PDF set-up routine, the data consumer callbacks and the canvas outline.
#include "export/pdf_routines.h"

#include "platform/cg_context.h"
#include "platform/log.h"
#include "platform/pdf_context.h"
#include "render/combo_context.h"

#include <cstdio>
#include <map>
#include <new>
#include <string>

namespace scrivlet {

namespace {
const char* const kCreator = "Scrivlet";
}

QnDataConsumer::~QnDataConsumer() {
  if (releaseInfo) releaseInfo(info);
}

size_t myCFDataConsumerPutBytes(void* info, const void* bytes, size_t count) {
  auto* data = static_cast<QnMutableDataRef*>(info);
  if (!data || !*data || !bytes) return 0;
  const auto* first = static_cast<const uint8_t*>(bytes);
  (*data)->insert((*data)->end(), first, first + count);
  return count;
}

void myCFDataConsumerRelease(void* info) { delete static_cast<QnMutableDataRef*>(info); }

std::unique_ptr<QnDataConsumer> myCGDataConsumerCreateWithCFData(QnMutableDataRef data) {
  if (!data) return nullptr;
  auto consumer = std::make_unique<QnDataConsumer>();
  consumer->info = new QnMutableDataRef(std::move(data));
  consumer->putBytes = myCFDataConsumerPutBytes;
  consumer->releaseInfo = myCFDataConsumerRelease;
  return consumer;
}

QnMutableDataRef setupPDFRenderState(QnRect mediaBox) {
  std::unique_ptr<std::map<std::string, std::string>> auxiliaryInfo(
      new (std::nothrow) std::map<std::string, std::string>());
  if (!auxiliaryInfo) {
    logLine("Couldn't make auxiliaryInfo dictionary.");
    return nullptr;
  }
  (*auxiliaryInfo)["Creator"] = kCreator;
  QnMutableDataRef data(new (std::nothrow) QnMutableData());
  if (!data) {
    logLine("Couldn't make CFData!");
    return nullptr;
  }
  std::shared_ptr<QnDataConsumer> consumer = myCGDataConsumerCreateWithCFData(data);
  if (!consumer) {
    logLine("Couldn't create data consumer!");
    return nullptr;
  }
  auto pdf = std::make_shared<QnPDFContext>(
      mediaBox,
      [consumer](const uint8_t* bytes, size_t count) { consumer->putBytes(consumer->info, bytes, count); },
      (*auxiliaryInfo)["Creator"]);
  if (!pdf->isValid()) {
    logLine("Couldn't create PDF context!");
    return nullptr;
  }
  pdf->context().saveGState();
  // The context is not handed out: it lives as long as the buffer it writes into.
  return QnMutableDataRef(data.get(), [data, pdf](QnMutableData*) mutable {
    pdf.reset();
    data.reset();
  });
}

void renderOutline(QnComboContext* context, float width, float height) {
  if (!context || !context->context()) return;
  CGContext* cg = context->context();
  cg->setStrokeColor(QnColor(1, 0, 0, 1));
  cg->setLineWidth(1.0);
  cg->beginPath();
  cg->moveToPoint(0, 0);
  cg->addLineToPoint(width, 0);
  cg->addLineToPoint(width, height);
  cg->addLineToPoint(0, height);
  cg->closePath();
  cg->drawPath(kQnPathStroke);
}

}  // namespace scrivlet
