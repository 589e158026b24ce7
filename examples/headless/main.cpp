// Signs with synthetic touches on the headless backend and writes the record's PNG, PDF, SVG and XML,
// and the record file a server seals, into the folder given (or the current one).
#include <scrivlet/scrivlet.h>

#include <cmath>
#include <cstdio>
#include <fstream>

using namespace scrivlet;

template <class Bytes>
bool write(const std::string& path, const std::optional<Bytes>& bytes) {
  std::ofstream file(path, std::ios::binary);
  return bytes && file.write(reinterpret_cast<const char*>(bytes->data()), bytes->size());
}

int main(int argc, char** argv) {
  std::string folder = argc > 1 ? argv[1] : ".";
  auto loop = std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::realTime);
  QnScheduler::setCurrent(loop);
  auto view = HeadlessView::create(makeRect(0, 0, 600, 300));
  auto delegate = std::make_shared<QnScrivletControllerDelegate>();
  std::shared_ptr<QnSignature> record;
  delegate->scrivletDidCompleteWithSignature = [&record](auto, auto signature) { record = signature; };
  auto scrivlet = QnScrivlet::scrivletWithViewDelegate(view, delegate);

  // One stroke: a wave across the view, a sample every 10 ms.
  auto pen = std::make_shared<HeadlessTouch>(QnPoint{100, 150}, 0.0);
  view->beginTouches({pen});
  for (int i = 1; i <= 100; ++i) {
    pen->moveTo({100 + 4.0 * i, 150 - 50 * std::sin(i / 8.0)}, i * 0.01);
    view->moveTouches({pen});
  }
  view->endTouches({pen});

  scrivlet->done();  // the record comes through the delegate once it is prepared
  for (int i = 0; i < 100 && !record; ++i) loop->advance(0.05);
  if (!record || !write(folder + "/signature.png", record->imageData()) ||
      !write(folder + "/signature.pdf", record->pdfData()) || !write(folder + "/signature.svg", record->svgString()) ||
      !write(folder + "/signature.xml", record->xmlString()) ||
      !write(folder + "/signature.json", std::optional(recordToJson(*record))))
    return std::fprintf(stderr, "sign_headless: no record written to %s\n", folder.c_str()), 1;
  std::printf("Signed: hash %s, files in %s\n", record->hashString().value_or("").c_str(), folder.c_str());
}
