// The demo: replays the built-in signature through the live ink on a headless view and writes what it
// drew to a folder.
#include "built_in_signature.h"
#include "capture/drawing_controller.h"
#include "platform/headless/headless_touch.h"
#include "platform/headless/headless_view.h"
#include "render/combo_context.h"
#include "render/drawing_view.h"

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

}  // namespace

int main(int argc, char** argv) {
  std::filesystem::path folder = argc > 1 ? argv[1] : "out";
  std::filesystem::create_directories(folder);

  auto view = HeadlessView::create(makeRect(0, 0, 540, 300));
  QnDemoDrawingController ink(view);
  ink.setVelocityReduction(0.85f);
  size_t points = 0;
  for (const auto& stroke : demo::builtInSignature()) {
    HeadlessTouch touch({stroke[0].x, stroke[0].y}, stroke[0].t);
    for (size_t i = 0; i < stroke.size(); ++i) {
      if (i > 0) touch.moveTo({stroke[i].x, stroke[i].y}, stroke[i].t);
      QnSignaturePoint p = QnSignaturePoint::pointWithTouchInView(&touch, view.get());
      if (i == 0)
        ink.drawTouchBeganWithPoint(p);
      else if (i + 1 == stroke.size())
        ink.drawTouchEndedWithPoint(p);
      else
        ink.drawTouchMovedWithPoint(p);
      ++points;
    }
  }

  std::vector<uint8_t> png = view->snapshot(2.0).encodePNG();
  QnComboContext svg(nullptr);
  svg.setIsSVG(true);
  svg.setScaleCTMXY(1, 1);
  ink.drawCanvasToContextWithOffset(&svg, {0, 0});
  bool written = writeFile(folder / "signature.png", std::string(png.begin(), png.end())) &&
                 writeFile(folder / "signature.svg", svg.serializeSVG(view->bounds().size));
  if (!written) {
    std::fprintf(stderr, "demo: could not write to %s\n", folder.c_str());
    return 1;
  }
  std::printf("Replayed %zu strokes, %zu points; wrote %s and %s\n", ink.drawingArray()->size(),
              points, (folder / "signature.png").c_str(), (folder / "signature.svg").c_str());
  return 0;
}
