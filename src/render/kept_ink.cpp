// The kept ink's tiles: which ones a stroke may touch, their versions, and their copies for undo.
#include "render/kept_ink.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace scrivlet {

namespace {

// Beyond the pen's reach, in pixels: antialiasing and the curves' flattening, with room to spare.
constexpr double kMarginPixels = 2;
// And a share of the reach itself: arcs are drawn as curves that may stray a little outside the circle.
constexpr double kReachSlack = 1.01;
// Debug marks are discs of radius 4 points around the segments' ends.
constexpr double kDebugMarkRadius = 4.5;
constexpr size_t kTileBytes = size_t(InkTiles::kSide) * InkTiles::kSide * 4;

bool sameBits(double a, double b) { return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b); }

// Whether the first `count` points of `drawn` ink as those of `stroke` do: the drawing reads a point's
// location, velocity and diameter alone.
bool sameInk(const QnStroke& drawn, const QnStroke& stroke, size_t count) {
  if (drawn.size() < count || stroke.size() < count) return false;
  if (&drawn == &stroke) return true;
  for (size_t i = 0; i < count; ++i) {
    const QnSignaturePoint &a = drawn[i], &b = stroke[i];
    if (!sameBits(a.location.x, b.location.x) || !sameBits(a.location.y, b.location.y) ||
        !sameBits(a.velocity.x, b.velocity.x) || !sameBits(a.velocity.y, b.velocity.y) ||
        std::bit_cast<uint32_t>(a.diameter) != std::bit_cast<uint32_t>(b.diameter))
      return false;
  }
  return true;
}

size_t sizeOf(const QnStrokeRef& stroke) { return stroke ? stroke->size() : 0; }

}  // namespace

InkTiles::InkTiles(int pixelWidth, int pixelHeight, double scale, bool showDebug)
    : pixelWidth(pixelWidth), pixelHeight(pixelHeight), scale(scale), showDebug(showDebug),
      across((pixelWidth + kSide - 1) / kSide), down((pixelHeight + kSide - 1) / kSide) {}

InkTiles::Range InkTiles::touchedBy(const QnStroke& stroke, size_t first, size_t last) const {
  Range all{0, 0, across, down};
  double minX = INFINITY, minY = INFINITY, maxX = -INFINITY, maxY = -INFINITY, reach = 0;
  for (size_t i = first; i <= last && i < stroke.size(); ++i) {
    const QnSignaturePoint& p = stroke[i];
    // A pen whose width is refused draws with the width set before it: anything may be inked.
    if (!std::isfinite(p.diameter) || p.diameter < 0) return all;
    minX = std::min(minX, p.location.x), maxX = std::max(maxX, p.location.x);
    minY = std::min(minY, p.location.y), maxY = std::max(maxY, p.location.y);
    reach = std::max(reach, double(p.diameter) * 0.5);
  }
  reach = reach * kReachSlack + (showDebug ? kDebugMarkRadius : 0);
  double left = std::floor((minX - reach) * scale - kMarginPixels), right = std::ceil((maxX + reach) * scale + kMarginPixels);
  double top = std::floor((minY - reach) * scale - kMarginPixels), bottom = std::ceil((maxY + reach) * scale + kMarginPixels);
  if (!std::isfinite(left) || !std::isfinite(right) || !std::isfinite(top) || !std::isfinite(bottom)) return all;
  auto column = [&](double x, int limit) { return int(std::clamp(std::floor(x / kSide), 0.0, double(limit))); };
  return {column(left, across), column(top, down), column(right, across - 1) + 1, column(bottom, down - 1) + 1};
}

QnRect InkTiles::pixelRect(int tile) const {
  int x = tile % across * kSide, y = tile / across * kSide;
  return makeRect(x, y, std::min(kSide, pixelWidth - x), std::min(kSide, pixelHeight - y));
}

void InkTiles::copy(QnBitmapContext& from, QnBitmapContext& to, const QnRect& r) {
  const unsigned char* source = from.pixels();
  unsigned char* target = to.pixels();
  if (!source || !target) return;
  int x = int(r.origin.x), y = int(r.origin.y), w = int(r.size.width), h = int(r.size.height);
  size_t sourceStride = from.stride(), targetStride = to.stride();
  for (int row = y; row < y + h; ++row)
    std::memcpy(target + row * targetStride + size_t(x) * 4, source + row * sourceStride + size_t(x) * 4, size_t(w) * 4);
  to.pixelsChanged();
}

void InkTiles::clear(QnBitmapContext& bitmap, const QnRect& r) {
  unsigned char* target = bitmap.pixels();
  if (!target) return;
  int x = int(r.origin.x), y = int(r.origin.y), w = int(r.size.width), h = int(r.size.height);
  for (int row = y; row < y + h; ++row) std::memset(target + size_t(row) * bitmap.stride() + size_t(x) * 4, 0, size_t(w) * 4);
  bitmap.pixelsChanged();
}

KeptInk::KeptInk(QnSize sizeInPoints, const Look& look, uint64_t& versions)
    : look_(look),
      counter_(versions),
      bitmap_(sizeInPoints, look.scale),
      combo_(&bitmap_.context()),
      tiles_(bitmap_.pixelWidth(), bitmap_.pixelHeight(), look.scale, look.showDebug),
      versions_(tiles_.count(), kClear),
      // Not zeroed: a slot is written before it is read, and pages never used are never touched.
      slots_(new unsigned char[size_t(tiles_.count()) * kTileBytes]),
      keptBy_(tiles_.count(), 0) {
  for (int slot = tiles_.count() - 1; slot >= 0; --slot) freeSlots_.push_back(slot);
}

bool KeptInk::drawnAlike(size_t index, const QnStrokeRef& stroke) {
  Drawn& drawn = drawn_[index];
  size_t size = sizeOf(stroke);
  bool alike = drawn.complete ? size == drawn.points : size > drawn.pieces;
  if (alike && drawn.stroke != stroke) {
    size_t compared = drawn.complete ? drawn.points : drawn.pieces;
    alike = compared == 0 || (drawn.stroke && stroke && sameInk(*drawn.stroke, *stroke, compared));
    if (alike) drawn.stroke = stroke;  // the same ink: next time the object itself answers
  }
  return alike;
}

void KeptInk::beginStroke(const QnStrokeRef& stroke) {
  if (!pagesCommitted_) bitmap_.commitPages(), pagesCommitted_ = true;  // on the lane, off the UI thread
  for (Drawn& undone : undone_) freeSlots(undone);
  undone_.clear();
  ++strokeSerial_;
  drawn_.emplace_back().stroke = stroke;
}

void KeptInk::willDraw(const QnStroke& stroke, size_t first, size_t last) {
  InkTiles::Range range = tiles_.touchedBy(stroke, first, last);
  Drawn& drawn = drawn_.back();
  for (int row = range.top; row < range.bottom; ++row) {
    for (int column = range.left; column < range.right; ++column) {
      int tile = row * tiles_.across + column;
      if (keptBy_[tile] != strokeSerial_ && drawn.undoable) {
        keptBy_[tile] = strokeSerial_;
        int slot = takeSlot();
        if (slot < 0) {
          freeSlots(drawn);
          drawn.undoable = false;
        } else {
          QnRect r = tiles_.pixelRect(tile);
          unsigned char* pixels = bitmap_.pixels();
          for (int y = 0; y < int(r.size.height); ++y)
            std::memcpy(&slots_[slot * kTileBytes + size_t(y) * InkTiles::kSide * 4],
                        pixels + size_t(r.origin.y + y) * bitmap_.stride() + size_t(r.origin.x) * 4, size_t(r.size.width) * 4);
          drawn.tiles.push_back({tile, slot, versions_[tile]});
        }
      }
      versions_[tile] = ++counter_;
    }
  }
}

int KeptInk::takeSlot() {
  // The oldest strokes give theirs up first: an undo rarely reaches so far back.
  for (size_t i = 0; freeSlots_.empty() && i + 1 < drawn_.size(); ++i) {
    if (!drawn_[i].tiles.empty()) freeSlots(drawn_[i]);
    drawn_[i].undoable = false;
  }
  if (freeSlots_.empty()) return -1;
  int slot = freeSlots_.back();
  freeSlots_.pop_back();
  return slot;
}

void KeptInk::freeSlots(Drawn& drawn) {
  for (const Drawn::Tile& t : drawn.tiles) freeSlots_.push_back(t.slot);
  std::vector<Drawn::Tile>().swap(drawn.tiles);
}

void KeptInk::swapTiles(Drawn& drawn) {
  unsigned char* pixels = bitmap_.pixels();
  unsigned char row[InkTiles::kSide * 4];
  for (Drawn::Tile& t : drawn.tiles) {
    QnRect r = tiles_.pixelRect(t.tile);
    size_t bytes = size_t(r.size.width) * 4;
    for (int y = 0; y < int(r.size.height); ++y) {
      unsigned char* kept = pixels + size_t(r.origin.y + y) * bitmap_.stride() + size_t(r.origin.x) * 4;
      unsigned char* slot = &slots_[t.slot * kTileBytes + size_t(y) * InkTiles::kSide * 4];
      std::memcpy(row, kept, bytes);
      std::memcpy(kept, slot, bytes);
      std::memcpy(slot, row, bytes);
    }
    std::swap(versions_[t.tile], t.version);
  }
  bitmap_.pixelsChanged();
}

bool KeptInk::undoDownTo(size_t count) {
  for (size_t i = count; i < drawn_.size(); ++i)
    if (!drawn_[i].undoable) return false;
  while (drawn_.size() > count) {
    Drawn& top = drawn_.back();
    swapTiles(top);
    // A stroke taken away unfinished (a cancelled touch) never comes back as it was.
    if (top.complete)
      undone_.push_back(std::move(top));
    else
      freeSlots(top);
    drawn_.pop_back();
  }
  return true;
}

bool KeptInk::canRedo(const QnStrokeRef& stroke) const {
  if (undone_.empty()) return false;
  const Drawn& undone = undone_.back();
  return sizeOf(stroke) == undone.points &&
         (undone.stroke == stroke || (undone.stroke && stroke && sameInk(*undone.stroke, *stroke, undone.points)));
}

void KeptInk::redo() {
  swapTiles(undone_.back());
  drawn_.push_back(std::move(undone_.back()));
  undone_.pop_back();
}

void KeptInk::reset() {
  for (Drawn& drawn : drawn_) freeSlots(drawn);
  for (Drawn& undone : undone_) freeSlots(undone);
  drawn_.clear(), undone_.clear();
  InkTiles::clear(bitmap_, makeRect(0, 0, tiles_.pixelWidth, tiles_.pixelHeight));
  std::fill(versions_.begin(), versions_.end(), kClear);
}

void KeptInk::copyTileInto(int tile, QnBitmapContext& cache) { InkTiles::copy(bitmap_, cache, tiles_.pixelRect(tile)); }

}  // namespace scrivlet
