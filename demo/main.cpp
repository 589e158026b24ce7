// The demo: replays the built-in signature as touches on a headless capture view and writes the
// signature record's files to a folder.
#include <scrivlet/scrivlet_controller.h>
#include <scrivlet/signature.h>

#include "built_in_signature.h"
#include "capture/drawing_controller.h"
#include "platform/headless/headless_touch.h"
#include "platform/headless/headless_view.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

using namespace scrivlet;

namespace {

bool writeFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out << bytes;
  return static_cast<bool>(out);
}

std::string text(const std::optional<std::vector<uint8_t>>& bytes) {
  return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
}

}  // namespace

int main(int argc, char** argv) {
  std::filesystem::path folder = argc > 1 ? argv[1] : "out";
  std::filesystem::create_directories(folder);

  auto view = HeadlessView::create(makeRect(0, 0, 540, 300));
  auto delegate = std::make_shared<QnScrivletControllerDelegate>();
  delegate->scrivletDidEndLineWithSignaturePointCount = [](auto, unsigned long count) {
    std::printf("stroke ended: %lu points on the canvas\n", count);
  };
  auto controller = QnScrivletController::create(view, delegate, {});
  controller->setShowDate(true);
  controller->setShowHash(true);

  for (const auto& stroke : demo::builtInSignature()) {
    auto touch = std::make_shared<HeadlessTouch>(QnPoint{stroke[0].x, stroke[0].y}, stroke[0].t);
    view->beginTouches({touch});
    for (size_t i = 1; i < stroke.size(); ++i) {
      touch->moveTo({stroke[i].x, stroke[i].y}, stroke[i].t);
      if (i + 1 < stroke.size())
        view->moveTouches({touch});
      else
        view->endTouches({touch});
    }
  }

  controller->setMyBrushStrokes(QnScrivletController::copyOfStrokesWithOffset(
      controller->drawingController()->drawingArray(), {0, 0}));
  controller->setCopyOfTargetViewBounds(view->bounds());
  controller->prepareScrivletData();
  std::shared_ptr<QnSignature> signature = controller->prepareSignature();

  bool written = writeFile(folder / "signature.png", text(signature->imageData())) &&
                 writeFile(folder / "signature.pdf", text(signature->pdfData())) &&
                 writeFile(folder / "signature.svg", signature->svgString().value_or("")) &&
                 writeFile(folder / "signature.xml", signature->xmlString().value_or("")) &&
                 writeFile(folder / "screen.png", text(view->snapshot(2.0).encodePNG()));
  if (!written) {
    std::fprintf(stderr, "demo: could not write to %s\n", folder.c_str());
    return 1;
  }
  std::printf("hash %s, %lu points, canvas %.0f x %.0f; files in %s\n",
              signature->hashString().value_or("").c_str(),
              controller->numberOfPointsInCurrentSignature(), signature->frame().size.width,
              signature->frame().size.height, folder.c_str());
  return 0;
}
