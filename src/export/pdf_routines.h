// Plain routines that go with the PDF renderer, for hosts that build PDFs of their own.
#pragma once

#include <scrivlet/engine/geometry.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace scrivlet {

class QnComboContext;

using QnMutableData = std::vector<uint8_t>;
using QnMutableDataRef = std::shared_ptr<QnMutableData>;

// A sink of bytes: putBytes appends to what info stands for, releaseInfo lets go of it.
struct QnDataConsumer {
  void* info = nullptr;
  size_t (*putBytes)(void* info, const void* bytes, size_t count) = nullptr;
  void (*releaseInfo)(void* info) = nullptr;
  ~QnDataConsumer();
};

// A PDF context with the creator "Scrivlet" writing into a new buffer, its page begun: the buffer is
// returned, the context is not (it lives as long as the buffer, which gets nothing until the
// context ends). Nothing, and one line on standard error, when a resource cannot be made.
QnMutableDataRef setupPDFRenderState(QnRect mediaBox);

// A consumer appending to the buffer; nothing without a buffer.
std::unique_ptr<QnDataConsumer> myCGDataConsumerCreateWithCFData(QnMutableDataRef data);
// The consumer's callbacks; info is the buffer it holds.
size_t myCFDataConsumerPutBytes(void* info, const void* bytes, size_t count);
void myCFDataConsumerRelease(void* info);

// Strokes the canvas outline in red, on a context that draws (an SVG recording draws nothing).
void renderOutline(QnComboContext* context, float width, float height);

}  // namespace scrivlet
