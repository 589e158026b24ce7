// The ink view's cache and its kept ink: a full redraw draws only what the kept ink lacks, undoes by
// putting tiles back, and copies only the tiles that differ; a stroke's finished pieces are kept as
// they are drawn live, so that its end leaves only its last piece to draw.
#include "render/drawing_view.h"

#include <scrivlet/engine/context.h>

#include "platform/image.h"
#include "platform/main_thread.h"

#include <algorithm>

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

void QnDrawingView::advanceKeptInk(const QnStrokeList& strokes) {
  KeptInk::Look current = look();
  if (!keptInk_ && strokes.size() == 1) keptInk_ = std::make_unique<KeptInk>(cacheSize_, current, inkVersions_);
  if (!keptInk_ || !(keptInk_->look() == current)) return;
  // Only the open stroke goes on here, over strokes kept as they stand; anything else waits for the
  // next full redraw.
  size_t kept = keptInk_->drawn().size(), count = strokes.size();
  if (kept + 1 != count && kept != count) return;
  for (size_t s = 0; s + 1 < count; ++s) {
    const KeptInk::Drawn& drawn = keptInk_->drawn()[s];
    if (!drawn.complete || drawn.stroke != strokes[s] || drawn.points != (strokes[s] ? strokes[s]->size() : 0)) return;
  }
  const QnStrokeRef& open = strokes.back();
  if (!open) return;
  if (kept + 1 == count)
    keptInk_->beginStroke(open);
  else if (keptInk_->top().complete || keptInk_->top().stroke != open)
    return;
  // Every piece but the last one's is final: the last index may still gain its closing piece.
  KeptInk::Drawn& top = keptInk_->top();
  size_t n = open->size();
  if (n >= 2 && top.pieces < n - 1) {
    beginStroke(&keptInk_->surface(), *open, current.color);
    drawPieces(&keptInk_->surface(), *open, current.color, top.pieces, n - 1, true, true, keptInk_.get());
    top.pieces = n - 1;
  }
  top.points = n;
}

void QnDrawingView::redrawCacheThroughKeptInk(const QnStrokeList& strokes) {
  KeptInk::Look current = look();
  if (!keptInk_ || !(keptInk_->look() == current))
    keptInk_ = std::make_unique<KeptInk>(cacheSize_, current, inkVersions_);
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
  }
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
