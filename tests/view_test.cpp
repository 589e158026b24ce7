// The view model: geometry notifications, display requests and the headless snapshot.
#include <scrivlet/view.h>

#include "platform/headless/headless_view.h"
#include "platform/recording_context.h"

#include <gtest/gtest.h>

namespace scrivlet {
namespace {

TEST(View, FrameChangeNotifiesTheObserversOfEachChangedKey) {
  auto view = HeadlessView::create(makeRect(0, 0, 100, 50));
  std::vector<std::string> seen;
  auto record = [&](QnGeometryTarget target, const std::string& key) {
    seen.push_back((target == QnGeometryTarget::view ? "view." : "layer.") + key);
  };
  view->addGeometryObserver(QnGeometryTarget::view, "frame", record);
  for (const char* key : {"bounds", "position", "frame", "transform"})
    view->addGeometryObserver(QnGeometryTarget::layer, key, record);

  view->setFrame(makeRect(0, 0, 200, 50));
  EXPECT_EQ(seen, (std::vector<std::string>{"layer.position", "layer.bounds", "layer.frame",
                                            "view.frame"}));
  seen.clear();
  view->setFrame(makeRect(5, 0, 200, 50));  // a move keeps the bounds
  EXPECT_EQ(seen, (std::vector<std::string>{"layer.position", "layer.frame", "view.frame"}));
  seen.clear();
  view->notifyGeometryChange(QnGeometryTarget::layer, "transform");
  EXPECT_EQ(seen, (std::vector<std::string>{"layer.transform"}));
  EXPECT_EQ(view->bounds(), makeRect(0, 0, 200, 50));
}

TEST(View, RemovedObserverIsNoLongerTold) {
  auto view = HeadlessView::create(makeRect(0, 0, 10, 10));
  int calls = 0;
  auto token = view->addGeometryObserver(QnGeometryTarget::view, "frame",
                                         [&](QnGeometryTarget, const std::string&) { ++calls; });
  view->setFrame(makeRect(0, 0, 20, 20));
  view->removeGeometryObserver(token);
  view->setFrame(makeRect(0, 0, 30, 30));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(view->geometryObserverCount(), 0u);
}

TEST(View, DisplayRequestsAccumulateUntilDisplayed) {
  auto view = HeadlessView::create(makeRect(0, 0, 100, 100));
  EXPECT_FALSE(view->needsDisplay());
  view->setNeedsDisplayInRect(makeRect(10, 10, 5, 5));
  view->setNeedsDisplayInRect(makeRect(40, 0, 10, 20));
  EXPECT_TRUE(view->needsDisplay());
  EXPECT_EQ(view->dirtyRect(), makeRect(10, 0, 40, 20));
  EXPECT_EQ(view->displayRequestCount(), 2u);
  RecordingContext context;
  view->displayInContext(context);
  EXPECT_FALSE(view->needsDisplay());
}

// A subview that fills its bounds, to see where the snapshot puts it.
class FilledView : public QnView {
 public:
  using QnView::QnView;
  void drawRect(CGContext& context, const QnRect& rect) override {
    context.setFillColor(QnColor(1, 0, 0, 1));
    context.fillRect(rect);
  }
};

TEST(View, SnapshotDrawsVisibleSubviewsInTheirFrames) {
  auto view = HeadlessView::create(makeRect(0, 0, 40, 20));
  auto shown = std::make_shared<FilledView>(makeRect(10, 5, 10, 10));
  auto hidden = std::make_shared<FilledView>(makeRect(30, 0, 10, 10));
  hidden->setHidden(true);
  view->addSubview(shown);
  view->addSubview(hidden);
  EXPECT_EQ(shown->superview(), view);

  QnImage image = view->snapshot(2.0);
  ASSERT_EQ(image.pixelWidth(), 80);
  ASSERT_EQ(image.pixelHeight(), 40);
  EXPECT_EQ(image.pixelAt(30, 20).r, 255);  // inside the shown subview
  EXPECT_EQ(image.pixelAt(30, 20).a, 255);
  EXPECT_EQ(image.pixelAt(19, 20).a, 0);    // just left of it
  EXPECT_EQ(image.pixelAt(70, 5).a, 0);     // where the hidden one is

  shown->removeFromSuperview();
  EXPECT_EQ(view->subviews().size(), 1u);
  EXPECT_EQ(shown->superview(), nullptr);
}

TEST(View, ZeroSizedViewSnapshotsToAnEmptyImage) {
  auto view = HeadlessView::create(makeRect(0, 0, 0, 0));
  QnImage image = view->snapshot(2.0);
  EXPECT_EQ(image.pixelWidth(), 0);
  EXPECT_TRUE(image.encodePNG().empty() || image.pixelHeight() == 0);
}

}  // namespace
}  // namespace scrivlet
