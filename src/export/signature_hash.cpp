// A fresh hash for every preparation, and the badge that prints it.
#include "export/signature_hash.h"

#include "render/style_kit.h"
#include "platform/cg_context.h"
#include "platform/crypto.h"
#include "platform/format.h"
#include "platform/narrowing.h"
#include "render/combo_context.h"

namespace scrivlet {

namespace {
constexpr size_t kHashLength = 10;
constexpr float kBadgeGrey = 0.96f;
constexpr double kSVGBadgeGrey = 0.65;
constexpr double kSVGBadgeAlpha = 0.47;
constexpr QnPoint kLockOffset{4.0, -20.0};  // from the badge's baseline row
constexpr double kTextX = 22.0;
}  // namespace

std::string newSignatureHash(const std::optional<std::string>& customHash) {
  std::string digits;
  for (uint8_t byte : sha1Digest(randomUUIDString())) digits += format02x(byte);
  // A custom hash takes the place of the generated one, even an empty one.
  return customHash ? *customHash : digits.substr(0, kHashLength);
}

void renderHashBadge(QnComboContext* context, bool showDate, const std::string& hash, float fontSize,
                     float opacity, double canvasHeight, double dateSize) {
  if (!context) return;
  double y = showDate ? canvasHeight - dateSize - 8.0 : canvasHeight - 7.0;
  double textRow = y - fontSize + 1.0;
  QnPoint lockOrigin{kLockOffset.x, y + kLockOffset.y};

  if (!context->isSVG()) {
    CGContext* cg = context->context();
    if (!cg) return;
    QnColor light(kBadgeGrey, kBadgeGrey, kBadgeGrey, 1.0);
    cg->setTextDrawingMode(kQnTextFill);
    cg->setFillColor(light);
    cg->setStrokeColor(light);
    cg->setShadow({2.0, 2.0}, 0.0, QnColor(0, 0, 0, 0.2));
    cg->setAlpha(opacity);
    QnScrivletStyleKit::drawQn_lockWithFillColorStartPoint(*cg, QnColor(kBadgeGrey, 1.0), lockOrigin);
    cg->showText(hash, {kTextX, textRow}, fontSize, light);
    // The shadow and alpha stay: the badge is the last thing drawn.
    return;
  }
  context->setFillColorWithColor(QnColor(kSVGBadgeGrey, kSVGBadgeGrey, kSVGBadgeGrey, 1.0));
  context->setAlpha(kSVGBadgeAlpha);
  context->showTextAtPointTextSize({kTextX, textRow + 5.0}, hash, fontSize);
  context->setTranslateCTMXY(narrowToFloat(lockOrigin.x), narrowToFloat(lockOrigin.y));
  QnScrivletStyleKit::addQn_lockPath(*context);
  context->drawPath(kQnPathFill);
  context->setTranslateCTMXY(0, 0);
  context->setAlpha(1.0);
}

}  // namespace scrivlet
