// The ink view: draws strokes as filled outlines of varying width into any drawing surface, keeps a
// cached bitmap of the ink and shows it.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/signature_point.h>
#include <scrivlet/engine/view.h>

#include "platform/coverage_mask.h"
#include "platform/parallel.h"
#include "render/kept_ink.h"

#include <functional>
#include <memory>

namespace scrivlet {

struct QnNotification;

// What inks a stroke besides its points: the colour, the angle between velocities past which a bend
// is drawn as a corner, and the debugging marks.
struct QnInk {
  QnColor color = QnColor::black();
  float cornerThreshold = 0.7853981852531433f;  // pi/4
  bool showDebug = false;

  bool operator==(const QnInk&) const = default;
};

class QnContext;

class QnDrawingView : public QnView {
 public:
  explicit QnDrawingView(QnRect frame);
  ~QnDrawingView() override;

  // The context whose notification centre the view listens to and whose screen scale its cache has:
  // the default one until its controller is given another.
  QnContext& context() const;
  void setContext(std::shared_ptr<QnContext> context);

  // The strokes to draw, kept by reference. The export thread swaps them too, so they are read and
  // written atomically, like the ink colour.
  QnStrokeListRef myStrokes() const { return std::atomic_load(&myStrokes_); }
  void setMyStrokes(QnStrokeListRef strokes) { std::atomic_store(&myStrokes_, std::move(strokes)); }
  QnColor strokeColor() const { return *std::atomic_load(&strokeColor_); }
  void setStrokeColor(const QnColor& color) {
    std::atomic_store(&strokeColor_, std::make_shared<const QnColor>(color));
  }

  float cornerThreshold() const { return cornerThreshold_; }
  void setCornerThreshold(float threshold) { cornerThreshold_ = threshold; }
  bool showDebug() const { return showDebug_; }
  void setShowDebug(bool show) { showDebug_ = show; }
  bool drawSmoothCurve() const { return drawSmoothCurve_; }
  void setDrawSmoothCurve(bool smooth) { drawSmoothCurve_ = smooth; }
  bool useCalligraphicBrush() const { return useCalligraphicBrush_; }
  void setUseCalligraphicBrush(bool calligraphic) { useCalligraphicBrush_ = calligraphic; }
  float strokeWidth() const { return strokeWidth_; }
  // Tuning settings kept for hosts; no drawing step reads them.
  float strokeSmoothingAmount() const { return strokeSmoothingAmount_; }
  float constantDiameterMaximumDistance() const { return constantDiameterMaximumDistance_; }
  float smoothingAccelerationLimit() const { return smoothingAccelerationLimit_; }
  bool useAMSmoothing() const { return useAMSmoothing_; }
  float calligraphicBrushRatio() const { return calligraphicBrushRatio_; }
  float calligraphicBrushAngle() const { return calligraphicBrushAngle_; }
  bool isCursor() const { return isCursor_; }
  bool alwaysDraw() const { return alwaysDraw_; }
  int cursorType() const { return cursorType_; }
  QnPoint cursorLocation() const { return cursorLocation_; }
  QnRect strokeBounds() const { return strokeBounds_; }

  // The cache: a bitmap of the view's size at the screen scale, and the surface that draws into it.
  // It is made when first drawn into or asked for, so that a view that never draws costs no pixels.
  void initContext(QnSize size);
  QnBitmapContext* cacheContext();
  QnComboContext* cacheComboContext();
  // Makes the cache new and empty at the view's size and asks for a full redisplay; nothing at size
  // zero. A cache of the same size is kept and counts as cleared.
  void updateLayout();

  // Draws myStrokes into the surface: with full false only the newest segments of the last stroke,
  // with final true the piece that carries the ink to the last point too.
  void drawToContextWithFinalSegmentFullRedraw(QnComboContext* context, bool finalSegment,
                                               bool fullRedraw);
  // The same with the list given, for a caller that has just set it: another thread may set its
  // own meanwhile, and each must draw the list it set.
  void drawStrokesToContextWithFinalSegmentFullRedraw(const QnStrokeListRef& strokes,
                                                      QnComboContext* context, bool finalSegment,
                                                      bool fullRedraw);
  void drawToCacheWithFinalSegmentFullRedraw(bool finalSegment, bool fullRedraw);
  void drawStrokesToCacheWithFinalSegmentFullRedraw(const QnStrokeListRef& strokes, bool finalSegment,
                                                    bool fullRedraw);
  // The ink this view draws with now.
  QnInk ink() const { return {strokeColor(), cornerThreshold_, showDebug_}; }
  // Every stroke drawn in full with the ink, as a full redraw off the main thread draws it, but with
  // no view at all: nothing cleared, nothing redisplayed, the same on every thread.
  static void drawStrokesWithInk(QnComboContext* context, const QnStrokeList& strokes, const QnInk& ink);
  // Shows the cache over the bounds.
  void drawRect(CGContext& context, const QnRect& rect) override;

  // One cubic segment stroked at a constant width.
  void drawSegmentInContextWithOriginDestinationDiameterStartingControlPointEndingControlPoint(
      QnComboContext* context, QnPoint origin, QnPoint destination, float diameter,
      QnPoint startingControlPoint, QnPoint endingControlPoint);
  // One cubic segment as a filled outline whose width goes from one diameter to the other, with
  // half-circle caps.
  void
  drawSegmentInContextWithOriginDestinationStartingDiameterEndingDiameterStartingControlPointEndingControlPoint(
      QnComboContext* context, QnPoint origin, QnPoint destination, float startingDiameter,
      float endingDiameter, QnPoint startingControlPoint, QnPoint endingControlPoint);

  // Notification handlers: "colorChanged" with the "color" key (registered at creation), and
  // "strokeWidthChanged" with "strokeWidth" (for a host to register itself).
  void colorChanged(const QnNotification& notification);
  // Listens for "colorChanged" on the context's notification centre.
  void observeColorChanges();
  void strokeWidthChanged(const QnNotification& notification);

  // Geometry of vectors and points.
  static double pointIsAboveThreshold(QnPoint vector, float threshold);
  static double squaredDistanceBetweenAnd(QnPoint a, QnPoint b);
  static double distanceBetweenAnd(QnPoint a, QnPoint b);
  static float angleBetweenVector1Vector2(QnPoint v1, QnPoint v2);
  static bool angleBetweenVector1Vector2IsGreaterThan(QnPoint v1, QnPoint v2, float threshold);
  static bool vectorIsOppositeVector(QnPoint v1, QnPoint v2);
  static bool vectorIsCollinearToVectorWithinRange(QnPoint v1, QnPoint v2, float range);
  static bool vectorIsCollinearToVector(QnPoint v1, QnPoint v2);

 private:
  // A view that only inks: no cache, no notifications.
  QnDrawingView(QnRect frame, const QnInk& ink);
  // Live ink is the newest pieces drawn into the cache on the main thread.
  void drawStroke(QnComboContext* context, const QnStroke& stroke, const QnColor& color,
                  bool finalSegment, bool fullRedraw, bool live = false);
  // What every stroke begins with: its colours, pen and a move to its first point.
  void beginStroke(QnComboContext* context, const QnStroke& stroke, const QnColor& color);
  // Indices [from, to) of a stroke: index 0 its dot, index i its piece between the points around
  // point i - 1, the last index with the piece that carries the ink on to the last point (when final
  // or full). Into the kept ink, each is announced to it first.
  // A segment (index >= 2) is laid from its coverage instead where laySegment(i) says it is.
  void drawPieces(QnComboContext* context, const QnStroke& stroke, const QnColor& color, size_t from,
                  size_t to, bool finalSegment, bool fullRedraw, KeptInk* into = nullptr,
                  const std::function<bool(size_t)>& laySegment = {});
  // Index i >= 2's segment, without the closing piece.
  void drawSegment(QnComboContext* context, const QnStroke& stroke, size_t i);
  // Lays index i >= 2's segment of live ink on the cache from its coverage, rasterized the first time
  // only; false when it is drawn as usual instead (drawing_view_cache.cpp).
  bool layLiveSegment(const QnStroke& stroke, size_t i, const QnColor& color);
  void drawDebugMarks(QnComboContext* context, QnPoint origin, QnPoint destination, QnPoint point,
                      const QnColor& color);
  void requestRedisplay(const QnStrokeList* strokes, bool fullRedraw);

  // The cache and the kept ink (drawing_view_cache.cpp).
  QnBitmapContext& cache();
  KeptInk::Look look();
  // Clears a cache that counts as cleared; makes no pixel of it count as known.
  void settleCache(bool forgetLevels);
  // After live ink: its tiles differ from the kept ink's; the open stroke's finished pieces go on.
  void noteLiveInk(const QnStrokeList& strokes);
  void advanceKeptInk(const QnStrokeList& strokes);
  // A full redraw of the cache through the kept ink, and the cache brought level with it (once the
  // kept ink's work is settled).
  void redrawCacheThroughKeptInk(const QnStrokeList& strokes);
  void levelCacheWithKeptInk();

  QnStrokeListRef myStrokes_;
  std::shared_ptr<const QnColor> strokeColor_;
  float cornerThreshold_;
  bool showDebug_ = false;
  float strokeSmoothingAmount_;
  float constantDiameterMaximumDistance_;
  float smoothingAccelerationLimit_;
  bool drawSmoothCurve_;
  bool useAMSmoothing_;
  bool useCalligraphicBrush_;
  float calligraphicBrushRatio_;
  float calligraphicBrushAngle_;
  float strokeWidth_ = 0;
  bool isCursor_;
  bool alwaysDraw_;
  int cursorType_ = 0;
  QnPoint cursorLocation_;
  QnRect strokeBounds_;
  std::unique_ptr<QnBitmapContext> cacheContext_;
  std::unique_ptr<QnComboContext> cacheComboContext_;
  QnSize cacheSize_;
  double cacheScale_ = 1;
  // Cleared by a layout that kept the cache, its pixels not yet touched: a full redraw overwrites them.
  bool cacheCleared_ = false;
  // The coverage of the two newest segments of live ink, each drawn again at the next sample or at
  // the stroke's end, with all its shape depends on but the bitmap's size and scale, which laying the
  // coverage checks: three points and the corner threshold.
  struct LiveSegment {
    QnPoint locations[3], velocities[3];
    float diameters[3] = {};
    float cornerThreshold = 0;
    size_t index = 0;  // in its stroke
    std::shared_ptr<const QnCoverage> coverage;
    // Whether it is the segment these three points draw.
    bool madeFrom(const QnSignaturePoint* points, float threshold) const;
  };
  LiveSegment liveSegments_[2];
  int newestLiveSegment_ = 0;
  std::unique_ptr<QnCoverageMask> liveMask_;
  std::unique_ptr<QnComboContext> liveMaskSurface_;
  // The segments live ink rasterized, until the kept ink's work for them is posted: it lays them too.
  std::vector<LiveSegment> openCoverages_;
  // For each tile of the cache, the version of the kept ink's tile it holds, or kUnknownLevel.
  std::vector<uint64_t> cacheLevels_;
  static constexpr uint64_t kUnknownLevel = UINT64_MAX;
  // The finished strokes drawn in full into a bitmap of their own (the open one as far as its
  // pieces are final), so that a full redraw draws only what is new, undoes by putting tiles back,
  // and copies only the tiles that differ into the cache. Compositing is sequential, so the pixels
  // are those of drawing every stroke again.
  std::unique_ptr<KeptInk> keptInk_;
  uint64_t inkVersions_ = KeptInk::kClear;
  bool observesNotifications_ = false;
  std::shared_ptr<QnContext> context_;  // none for the default context
  // The open stroke's final pieces are drawn into the kept ink off the main thread, in order, on a
  // lane of the context's pool; whatever else reads or changes the kept ink waits for them first
  // (settleKeptInk). Until then the main thread goes by the plan: each kept stroke as the kept ink
  // will hold it once the work posted is done.
  struct KeptInkWork;
  struct PlannedStroke {
    QnStrokeRef stroke;
    size_t points = 0, pieces = 0;
    bool complete = false;
    size_t postedPieces = 0, postedPoints = 0;  // as far as the work posted goes
  };
  std::vector<PlannedStroke> keptPlan_;
  std::unique_ptr<KeptInkWork> keptInkWork_;
  // Posts the open stroke's pieces planned and not yet posted.
  void postKeptInk();
  // Everything planned is drawn: the plan is then the kept ink's.
  void settleKeptInk();
  void planFromKeptInk();
};

// The kept ink's drawing off the main thread: an inking view of the kept ink's look, and its lane.
struct QnDrawingView::KeptInkWork {
  KeptInkWork(ThreadPool& pool, const KeptInk::Look& look)
      : inker(QnRectZero, {look.color, look.cornerThreshold, look.showDebug}), lane(pool) {}
  QnDrawingView inker;
  SerialLane lane;  // last: it is gone first, once its jobs are done
};

}  // namespace scrivlet
