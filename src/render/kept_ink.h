// The ink view's finished strokes, drawn in full into a bitmap of their own cut into tiles: what each
// stroke changed is known tile by tile, so that the cache is brought level by copying only the tiles
// that differ, and a stroke is undone or redone by swapping its tiles back.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/signature_point.h>

#include "platform/image.h"
#include "render/combo_context.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace scrivlet {

// A bitmap's pixels as square tiles, numbered row by row.
struct InkTiles {
  static constexpr int kSide = 64;
  InkTiles(int pixelWidth, int pixelHeight, double scale, bool showDebug);
  int count() const { return across * down; }
  // The tiles that drawing what points [first, last] of a stroke ink may touch: within the pen's
  // reach of the points and a margin for smoothing (all of them for a point that is not a number).
  struct Range {
    int left = 0, top = 0, right = 0, bottom = 0;  // tile columns and rows, right and bottom excluded
  };
  Range touchedBy(const QnStroke& stroke, size_t first, size_t last) const;
  // The tile's pixel rectangle.
  QnRect pixelRect(int tile) const;
  static void copy(QnBitmapContext& from, QnBitmapContext& to, const QnRect& pixels);
  static void clear(QnBitmapContext& bitmap, const QnRect& pixels);

  int pixelWidth, pixelHeight;
  double scale;
  bool showDebug;
  int across, down;
};

class KeptInk {
 public:
  // What the pixels depend on besides the strokes.
  struct Look {
    int pixelWidth = 0, pixelHeight = 0;
    double scale = 1;
    QnColor color;
    float cornerThreshold = 0;
    bool showDebug = false;
    bool operator==(const Look&) const = default;
  };
  // A stroke as far as it is drawn: `pieces` of its indices (dot, segments) in full form; complete
  // when the last index with its closing piece is drawn too, and then `points` is its length.
  struct Drawn {
    QnStrokeRef stroke;
    size_t points = 0;
    size_t pieces = 0;
    bool complete = false;
    bool undoable = true;  // its tiles from before it are all kept
    struct Tile {
      int tile, slot;
      uint64_t version;
    };
    std::vector<Tile> tiles;
  };
  // The version of a tile no drawing has touched: all pixels clear.
  static constexpr uint64_t kClear = 0;

  // Tile versions are numbered by `versions`, which outlives this ink, so that a number never means
  // two different contents.
  KeptInk(QnSize sizeInPoints, const Look& look, uint64_t& versions);
  KeptInk(const KeptInk&) = delete;
  KeptInk& operator=(const KeptInk&) = delete;

  const Look& look() const { return look_; }
  QnComboContext& surface() { return combo_; }
  QnBitmapContext& bitmap() { return bitmap_; }
  const std::vector<Drawn>& drawn() const { return drawn_; }
  Drawn& top() { return drawn_.back(); }

  // Whether the kept stroke at `index` draws as `stroke` would, as far as it is drawn; a complete one
  // must be the whole stroke. A match by value takes the new object for the next time.
  bool drawnAlike(size_t index, const QnStrokeRef& stroke);
  // Starts keeping a stroke; strokes undone can no longer come back by their tiles.
  void beginStroke(const QnStrokeRef& stroke);
  // Before drawing what points [first, last] of the top stroke ink: the tiles it may touch are kept
  // as they are for its undo (the first time), and counted as changed.
  void willDraw(const QnStroke& stroke, size_t first, size_t last);
  // Takes the strokes above the first `count` away, their tiles put back: false when one of them lost
  // its tiles to the budget (nothing is changed then).
  bool undoDownTo(size_t count);
  // Whether `stroke` is the stroke undone last, whole; then redo() swaps its tiles back in.
  bool canRedo(const QnStrokeRef& stroke) const;
  void redo();
  // Clears the bitmap and forgets every stroke.
  void reset();

  const InkTiles& tiles() const { return tiles_; }
  uint64_t version(int tile) const { return versions_[tile]; }
  // Copies the tile's pixels into the same tile of `cache`, a bitmap of the same size.
  void copyTileInto(int tile, QnBitmapContext& cache);

 private:
  int takeSlot();
  void freeSlots(Drawn& drawn);
  void swapTiles(Drawn& drawn);

  Look look_;
  uint64_t& counter_;
  QnBitmapContext bitmap_;
  QnComboContext combo_;
  InkTiles tiles_;
  std::vector<uint64_t> versions_;
  std::vector<Drawn> drawn_, undone_;
  // Room for one copy of every tile: a stroke's tiles from before it, or an undone stroke's own.
  std::unique_ptr<unsigned char[]> slots_;
  std::vector<int> freeSlots_;
  // The stroke that last kept each tile, so that a tile is kept once per stroke.
  std::vector<uint64_t> keptBy_;
  uint64_t strokeSerial_ = 0;
  bool pagesCommitted_ = false;  // the bitmap's pages, before the first stroke is drawn into it
};

}  // namespace scrivlet
