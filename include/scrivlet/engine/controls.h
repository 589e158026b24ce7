// Small user-interface models the modal screen is made of: a wrapping text label and toolbar items.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/view.h>

#include <functional>
#include <optional>
#include <string>

namespace scrivlet {

enum QnViewAutoresizing {
  kQnAutoresizingFlexibleWidth = 2,
  kQnAutoresizingFlexibleHeight = 16,
  kQnAutoresizingFlexibleBottomMargin = 32,
};

enum QnTextAlignment { kQnTextAlignmentLeft = 0, kQnTextAlignmentCenter = 1 };
enum QnLineBreakMode { kQnLineBreakByWordWrapping = 0 };

// Text in bold "Helvetica", wrapped at word boundaries to the label's width.
class SCRIVLET_EXPORT QnLabel : public QnView {
 public:
  using QnView::QnView;

  const std::string& text() const { return text_; }
  void setText(std::string text) { text_ = std::move(text); }
  double fontSize() const { return fontSize_; }
  void setFontSize(double size) { fontSize_ = size; }
  // 0: as many lines as the text needs.
  int numberOfLines() const { return numberOfLines_; }
  void setNumberOfLines(int lines) { numberOfLines_ = lines; }
  int lineBreakMode() const { return lineBreakMode_; }
  void setLineBreakMode(int mode) { lineBreakMode_ = mode; }
  int textAlignment() const { return textAlignment_; }
  void setTextAlignment(int alignment) { textAlignment_ = alignment; }
  const QnColor& textColor() const { return textColor_; }
  void setTextColor(const QnColor& color) { textColor_ = color; }

  // The text's lines when wrapped to the given width.
  std::vector<std::string> linesForWidth(double width) const;
  // Resizes the label to its wrapped text, keeping the origin and wrapping at the current width.
  void sizeToFit();
  void drawRect(CGContext& context, const QnRect& rect) override;

 private:
  std::string text_;
  double fontSize_ = 17;
  int numberOfLines_ = 1;
  int lineBreakMode_ = kQnLineBreakByWordWrapping;
  int textAlignment_ = kQnTextAlignmentLeft;
  QnColor textColor_ = QnColor::black();
};

enum QnBarButtonItemStyle { kQnBarButtonItemStylePlain = 0, kQnBarButtonItemStyleDone = 2 };

// A toolbar item: a text button with an action, or a flexible space.
struct SCRIVLET_EXPORT QnBarButtonItem {
  std::string title;
  int style = kQnBarButtonItemStylePlain;
  bool flexibleSpace = false;
  std::function<void()> action;

  static QnBarButtonItem button(std::string title, int style, std::function<void()> action) {
    return {std::move(title), style, false, std::move(action)};
  }
  static QnBarButtonItem flexibleSpaceItem() { return {{}, kQnBarButtonItemStylePlain, true, {}}; }
};

}  // namespace scrivlet
