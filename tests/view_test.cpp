// The view model: geometry notifications, display requests and the headless snapshot.
#include <scrivlet/view.h>

#include <scrivlet/headless_view.h>

#include "platform/image.h"
#include "platform/recording_context.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace scrivlet {
namespace {

using Keys = std::vector<std::string>;

TEST(View, FrameChangeNotifiesTheObserversOfEachChangedKeyUntilTheyAreRemoved) {
  using G = QnGeometryTarget;
  auto view = HeadlessView::create(makeRect(0, 0, 100, 50));
  Keys seen;
  auto record = [&](G target, const std::string& k) { seen.push_back((target == G::view ? "view." : "layer.") + k); };
  auto token = view->addGeometryObserver(G::view, "frame", record);
  for (const char* key : {"bounds", "position", "frame", "transform"}) view->addGeometryObserver(G::layer, key, record);

  view->setFrame(makeRect(0, 0, 200, 50));
  EXPECT_EQ(std::exchange(seen, {}), (Keys{"layer.position", "layer.bounds", "layer.frame", "view.frame"}));
  view->setFrame(makeRect(5, 0, 200, 50));  // a move keeps the bounds
  EXPECT_EQ(std::exchange(seen, {}), (Keys{"layer.position", "layer.frame", "view.frame"}));
  EXPECT_EQ(view->bounds(), makeRect(0, 0, 200, 50));
  view->removeGeometryObserver(token), view->setFrame(makeRect(0, 0, 30, 30));
  EXPECT_EQ(std::pair(seen, view->geometryObserverCount()),
            std::pair(Keys{"layer.position", "layer.bounds", "layer.frame"}, size_t{4}));
}

// A subview that fills its bounds, to see where the snapshot puts it.
struct FilledView : QnView {
  using QnView::QnView;
  void drawRect(CGContext& c, const QnRect& rect) override { c.setFillColor({1, 0, 0, 1}), c.fillRect(rect); }
};

TEST(View, DisplayRequestsAccumulateUntilDrawnAndTheSnapshotDrawsVisibleSubviewsInTheirFrames) {
  auto view = HeadlessView::create(makeRect(0, 0, 40, 20));
  EXPECT_FALSE(view->needsDisplay());
  view->setNeedsDisplayInRect(makeRect(10, 10, 5, 5)), view->setNeedsDisplayInRect(makeRect(40, 0, 10, 20));
  EXPECT_EQ(std::tuple(view->needsDisplay(), view->dirtyRect(), view->displayRequestCount()),
            std::tuple(true, makeRect(10, 0, 40, 20), uint64_t{2}));
  RecordingContext context;
  view->displayInContext(context);
  EXPECT_FALSE(view->needsDisplay());

  auto shown = std::make_shared<FilledView>(makeRect(10, 5, 10, 10));
  auto hidden = std::make_shared<FilledView>(makeRect(30, 0, 10, 10));
  hidden->setHidden(true), view->addSubview(shown), view->addSubview(hidden);
  EXPECT_EQ(shown->superview(), view);
  QnImage image = snapshotOfView(*view, 2.0);
  ASSERT_EQ(std::pair(image.pixelWidth(), image.pixelHeight()), std::pair(80, 40));
  const auto inside = image.pixelAt(30, 20);  // inside the shown one
  EXPECT_EQ(std::pair(+inside.r, +inside.a), std::pair(255, 255));
  // Nothing just left of it, nor where the hidden one is.
  EXPECT_EQ(std::pair(+image.pixelAt(19, 20).a, +image.pixelAt(70, 5).a), std::pair(0, 0));
  shown->removeFromSuperview();
  EXPECT_EQ(std::pair(view->subviews().size(), shown->superview()), std::pair(size_t{1}, std::shared_ptr<QnView>()));

  QnImage empty = snapshotOfView(*HeadlessView::create(QnRectZero), 2.0);  // a zero-sized view: an empty image
  EXPECT_TRUE(empty.pixelWidth() == 0 && (empty.encodePNG().empty() || empty.pixelHeight() == 0));
}

}  // namespace
}  // namespace scrivlet
