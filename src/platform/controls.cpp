// Word wrapping and drawing of labels.
#include <scrivlet/engine/controls.h>

#include "platform/cg_context.h"
#include "platform/fonts.h"

#include <algorithm>
#include <sstream>

namespace scrivlet {

std::vector<std::string> QnLabel::linesForWidth(double width) const {
  std::vector<std::string> lines;
  std::istringstream paragraphs(text_);
  std::string paragraph;
  while (std::getline(paragraphs, paragraph)) {
    std::istringstream words(paragraph);
    std::string word, line;
    while (words >> word) {
      std::string longer = line.empty() ? word : line + " " + word;
      // A word wider than the label gets a line of its own.
      if (!line.empty() && measureBoldText(longer, fontSize_).width > width) {
        lines.push_back(line);
        line = word;
      } else {
        line = longer;
      }
    }
    lines.push_back(line);
  }
  if (numberOfLines_ > 0 && static_cast<int>(lines.size()) > numberOfLines_)
    lines.resize(static_cast<size_t>(numberOfLines_));
  return lines;
}

void QnLabel::sizeToFit() {
  std::vector<std::string> lines = linesForWidth(frame().size.width);
  double widest = 0;
  for (const std::string& line : lines) widest = std::max(widest, measureBoldText(line, fontSize_).width);
  double lineHeight = measureBoldText("", fontSize_).height;
  setFrame({frame().origin, {widest, lineHeight * static_cast<double>(lines.size())}});
}

void QnLabel::drawRect(CGContext& context, const QnRect& rect) {
  double lineHeight = measureBoldText("", fontSize_).height;
  double y = 0;
  for (const std::string& line : linesForWidth(rect.size.width)) {
    double lineWidth = measureBoldText(line, fontSize_).width;
    double x = textAlignment_ == kQnTextAlignmentCenter ? (rect.size.width - lineWidth) / 2 : 0;
    context.showText(line, {x, y}, fontSize_, textColor_);
    y += lineHeight;
  }
}

}  // namespace scrivlet
