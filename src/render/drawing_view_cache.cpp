// The ink view's cache and its kept ink: a full redraw draws only what the kept ink lacks, undoes by
// putting tiles back, and copies only the tiles that differ; a stroke's finished pieces are kept as
// they are drawn live, so that its end leaves only its last piece to draw.
#include "render/drawing_view.h"

#include <scrivlet/engine/context.h>

#include "platform/image.h"
#include "platform/main_thread.h"

#include <algorithm>
#include <cmath>

namespace scrivlet {

void QnDrawingView::initContext(QnSize size) {
  cacheSize_ = size;
  cacheScale_ = context().screenScale();
  cacheComboContext_.reset();
  cacheContext_.reset();
  cacheLevels_.clear();
  cacheCleared_ = false;
}

QnBitmapContext& QnDrawingView::cache() {
  if (!cacheContext_) {
    cacheContext_ = std::make_unique<QnBitmapContext>(cacheSize_, cacheScale_);
    cacheContext_->commitPages();
    cacheComboContext_ = std::make_unique<QnComboContext>(&cacheContext_->context());
    InkTiles tiles(cacheContext_->pixelWidth(), cacheContext_->pixelHeight(), cacheScale_, false);
    cacheLevels_.assign(tiles.count(), KeptInk::kClear);
  }
  return *cacheContext_;
}

// Whoever holds the cache may draw into it: nothing of it is taken as known afterwards.
QnBitmapContext* QnDrawingView::cacheContext() {
  cache();
  settleCache(true);
  return cacheContext_.get();
}

QnComboContext* QnDrawingView::cacheComboContext() {
  cache();
  settleCache(true);
  return cacheComboContext_.get();
}

void QnDrawingView::updateLayout() {
  QnSize size = bounds().size;
  if (size.width == 0 && size.height == 0) return;
  // A cache of the same pixels counts as cleared: the full redraw that follows a layout then copies
  // only the tiles it must.
  if (cacheContext_ && size == cacheSize_ && context().screenScale() == cacheScale_)
    cacheCleared_ = true;
  else
    initContext(size);
  setNeedsDisplay();
}

void QnDrawingView::drawRect(CGContext& context, const QnRect&) {
  // A cache not made yet, or cleared, shows nothing.
  if (cacheContext_ && !cacheCleared_) context.drawImage(cacheContext_->sharedImage(), bounds());
}

void QnDrawingView::settleCache(bool forgetLevels) {
  QnBitmapContext& bitmap = cache();
  if (!cacheCleared_ && !forgetLevels) return;
  InkTiles tiles(bitmap.pixelWidth(), bitmap.pixelHeight(), cacheScale_, false);
  for (int tile = 0; tile < tiles.count(); ++tile) {
    if (cacheCleared_ && cacheLevels_[tile] != KeptInk::kClear) {
      InkTiles::clear(bitmap, tiles.pixelRect(tile));
      cacheLevels_[tile] = KeptInk::kClear;
    }
    if (forgetLevels) cacheLevels_[tile] = kUnknownLevel;
  }
  cacheCleared_ = false;
}

KeptInk::Look QnDrawingView::look() {
  QnBitmapContext& bitmap = cache();
  return {bitmap.pixelWidth(), bitmap.pixelHeight(), cacheScale_, strokeColor(), cornerThreshold_, showDebug_};
}

void QnDrawingView::noteLiveInk(const QnStrokeList& strokes) {
  const QnStrokeRef& last = strokes.back();
  if (!last || last->empty()) return;
  // The pieces just drawn, the closing one too, read the last four points at most.
  size_t n = last->size();
  InkTiles tiles(cacheContext_->pixelWidth(), cacheContext_->pixelHeight(), cacheScale_, showDebug_);
  InkTiles::Range range = tiles.touchedBy(*last, n < 4 ? 0 : n - 4, n - 1);
  for (int row = range.top; row < range.bottom; ++row)
    for (int column = range.left; column < range.right; ++column) cacheLevels_[row * tiles.across + column] = kUnknownLevel;
  advanceKeptInk(strokes);
}

bool QnDrawingView::LiveSegment::madeFrom(const QnSignaturePoint* points, float threshold) const {
  if (!coverage || cornerThreshold != threshold) return false;
  for (int k = 0; k < 3; ++k)
    if (!(locations[k] == points[k].location && velocities[k] == points[k].velocity && diameters[k] == points[k].diameter))
      return false;
  return true;
}

bool QnDrawingView::layLiveSegment(const QnStroke& stroke, size_t i, const QnColor& color) {
  if (showDebug_ || !cacheContext_) return false;
  const QnSignaturePoint* points = &stroke[i - 2];
  for (const LiveSegment& segment : liveSegments_)
    if (segment.madeFrom(points, cornerThreshold_) && segment.coverage->color() == color)
      return segment.coverage->layOn(*cacheContext_);
  // The segment's pixels: within the pen's reach of its three points, which hold its curves' control
  // points, and a margin for the antialiasing.
  double left = points[0].location.x, right = left, top = points[0].location.y, bottom = top, reach = 0;
  for (int k = 0; k < 3; ++k) {
    left = std::min(left, points[k].location.x), right = std::max(right, points[k].location.x);
    top = std::min(top, points[k].location.y), bottom = std::max(bottom, points[k].location.y);
    reach = std::max(reach, std::fabs(points[k].diameter * 0.5));  // a width limit may give one below 0
    if (!std::isfinite(points[k].diameter)) return false;
  }
  constexpr double kMarginInPixels = 2;
  double x0 = std::floor((left - reach) * cacheScale_) - kMarginInPixels, x1 = std::ceil((right + reach) * cacheScale_) + kMarginInPixels;
  double y0 = std::floor((top - reach) * cacheScale_) - kMarginInPixels, y1 = std::ceil((bottom + reach) * cacheScale_) + kMarginInPixels;
  if (!std::isfinite(x0 + x1 + y0 + y1)) return false;
  if (!liveMask_) liveMask_ = std::make_unique<QnCoverageMask>();
  CGContext* maskContext = liveMask_->begin(*cacheContext_, makeRect(x0, y0, x1 - x0, y1 - y0), color);
  if (!maskContext) return false;
  if (!liveMaskSurface_) liveMaskSurface_ = std::make_unique<QnComboContext>(maskContext);
  beginStroke(liveMaskSurface_.get(), stroke, color);
  drawSegment(liveMaskSurface_.get(), stroke, i);
  LiveSegment& segment = liveSegments_[1 - newestLiveSegment_];
  segment.coverage = liveMask_->take();
  segment.cornerThreshold = cornerThreshold_, segment.index = i;
  for (int k = 0; k < 3; ++k)
    segment.locations[k] = points[k].location, segment.velocities[k] = points[k].velocity, segment.diameters[k] = points[k].diameter;
  newestLiveSegment_ = 1 - newestLiveSegment_;
  // A bound for a stroke whose kept ink does not go on (another look, an undo under way).
  constexpr size_t kMostOpenCoverages = 64;
  if (openCoverages_.size() >= kMostOpenCoverages) openCoverages_.erase(openCoverages_.begin());
  openCoverages_.push_back(segment);
  return segment.coverage->layOn(*cacheContext_);
}

namespace {
// The open stroke's final pieces are handed to the kept ink's lane this many at a time: one job a
// sample would cost the main thread more in handing over than the drawing it saves.
constexpr size_t kPiecesAJob = 64;
// Samples faster than the lane draws (a replay, a busy pool) leave it behind by this many jobs at
// most: the main thread then helps it catch up, so that a stroke's end never waits for more.
constexpr size_t kMostJobsBehind = 4;
}  // namespace

void QnDrawingView::settleKeptInk() {
  postKeptInk();
  if (keptInkWork_) keptInkWork_->lane.wait();
}

void QnDrawingView::planFromKeptInk() {
  keptPlan_.clear();
  if (!keptInk_) return;
  for (const KeptInk::Drawn& drawn : keptInk_->drawn())
    keptPlan_.push_back({drawn.stroke, drawn.points, drawn.pieces, drawn.complete, drawn.pieces, drawn.points});
}

void QnDrawingView::advanceKeptInk(const QnStrokeList& strokes) {
  KeptInk::Look current = look();
  if (!keptInk_ && strokes.size() == 1) keptInk_ = std::make_unique<KeptInk>(cacheSize_, current, inkVersions_);
  if (!keptInk_ || !(keptInk_->look() == current)) return;
  // Only the open stroke goes on here, over strokes kept as they stand; anything else waits for the
  // next full redraw.
  size_t kept = keptPlan_.size(), count = strokes.size();
  if (kept + 1 != count && kept != count) return;
  for (size_t s = 0; s + 1 < count; ++s) {
    const PlannedStroke& planned = keptPlan_[s];
    if (!planned.complete || planned.stroke != strokes[s] || planned.points != (strokes[s] ? strokes[s]->size() : 0))
      return;
  }
  const QnStrokeRef& open = strokes.back();
  if (!open) return;
  if (kept + 1 == count) {
    keptPlan_.push_back({open});
    openCoverages_.clear();  // what is left of the strokes before: the kept ink drew their ends itself
    if (!keptInkWork_) keptInkWork_ = std::make_unique<KeptInkWork>(context().threadPool(), current);
    keptInkWork_->lane.post([ink = keptInk_.get(), open] { ink->beginStroke(open); });
  } else if (keptPlan_.back().complete || keptPlan_.back().stroke != open) {
    return;
  }
  // Every piece but the last one's is final: the last index may still gain its closing piece.
  PlannedStroke& top = keptPlan_.back();
  size_t n = open->size();
  if (n >= 2 && top.pieces < n - 1) top.pieces = n - 1;
  top.points = n;
  if (top.pieces >= top.postedPieces + kPiecesAJob) postKeptInk();
}

void QnDrawingView::postKeptInk() {
  if (keptPlan_.empty() || !keptInkWork_) return;
  PlannedStroke& top = keptPlan_.back();
  if (top.complete || (top.postedPieces == top.pieces && top.postedPoints == top.points)) return;
  // The job gets the points its pieces read, from two before the first of them, as a stroke of its
  // own: counted from there, every piece past the second is drawn as it is in the whole stroke. One
  // point more stands for the rest of the stroke, so that no piece is taken for the closing one and
  // the length decides the second piece as in the whole stroke.
  size_t from = top.postedPieces, to = top.pieces, points = top.points;
  size_t shift = from < 2 ? 0 : from - 2;
  QnStroke window(top.stroke->begin() + std::ptrdiff_t(std::min(shift, to)), top.stroke->begin() + std::ptrdiff_t(to));
  window.emplace_back();
  // The segments live ink rasterized are laid from their coverage, in the kept ink's colour only.
  std::vector<std::shared_ptr<const QnCoverage>> coverages(to > from ? to - from : 0);
  const QnColor& color = keptInk_->look().color;
  for (const LiveSegment& segment : openCoverages_)
    if (segment.index >= std::max<size_t>(from, 2) && segment.index < to && segment.coverage->color() == color &&
        segment.madeFrom(&(*top.stroke)[segment.index - 2], keptInk_->look().cornerThreshold))
      coverages[segment.index - from] = segment.coverage;
  std::erase_if(openCoverages_, [&](const LiveSegment& segment) { return segment.index < to; });
  keptInkWork_->lane.post([work = keptInkWork_.get(), ink = keptInk_.get(), from, to, shift, points,
                           window = std::move(window), color, coverages = std::move(coverages)] {
    if (to > from) {
      work->inker.beginStroke(&ink->surface(), window, color);
      work->inker.drawPieces(&ink->surface(), window, color, from - shift, to - shift, true, true, ink,
                             [&](size_t i) {
                               const auto& coverage = coverages[i + shift - from];
                               return coverage && coverage->layOn(ink->bitmap());
                             });
      ink->top().pieces = to;
    }
    ink->top().points = points;
  });
  top.postedPieces = to, top.postedPoints = points;
  if (keptInkWork_->lane.queued() > kMostJobsBehind) keptInkWork_->lane.wait();
}

void QnDrawingView::redrawCacheThroughKeptInk(const QnStrokeList& strokes) {
  settleKeptInk();
  KeptInk::Look current = look();
  if (!keptInk_ || !(keptInk_->look() == current)) {
    keptInk_ = std::make_unique<KeptInk>(cacheSize_, current, inkVersions_);
    keptInkWork_.reset();
  }
  KeptInk& kept = *keptInk_;
  size_t alike = 0;
  while (alike < kept.drawn().size() && alike < strokes.size() && kept.drawnAlike(alike, strokes[alike])) ++alike;
  // Strokes kept beyond the list are taken away by their tiles, or everything is drawn again.
  if (alike < kept.drawn().size() && !kept.undoDownTo(alike)) {
    kept.reset();
    alike = 0;
  }
  while (alike == kept.drawn().size() && alike < strokes.size() && kept.canRedo(strokes[alike])) {
    kept.redo();
    ++alike;
  }
  for (size_t s = 0; s < strokes.size(); ++s) {
    if (s < alike && kept.drawn()[s].complete) continue;
    const QnStrokeRef& stroke = strokes[s];
    if (s >= kept.drawn().size()) kept.beginStroke(stroke);
    KeptInk::Drawn& top = kept.top();
    size_t n = stroke ? stroke->size() : 0;
    if (n > 0) {
      beginStroke(&kept.surface(), *stroke, current.color);
      drawPieces(&kept.surface(), *stroke, current.color, top.pieces, n, true, true, &kept);
    }
    top.pieces = top.points = n;
    top.complete = true;
    top.tiles.shrink_to_fit();  // a finished stroke keeps no more tiles; its list lasts the signature
  }
  planFromKeptInk();
  levelCacheWithKeptInk();
}

void QnDrawingView::levelCacheWithKeptInk() {
  QnBitmapContext& bitmap = cache();
  for (int tile = 0; tile < keptInk_->tiles().count(); ++tile) {
    if (cacheLevels_[tile] == keptInk_->version(tile)) continue;
    keptInk_->copyTileInto(tile, bitmap);
    cacheLevels_[tile] = keptInk_->version(tile);
  }
  cacheCleared_ = false;
}

}  // namespace scrivlet
