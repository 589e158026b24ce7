// The settings of both pads through Qt's property system, as QML and Qt Designer write them: each says
// once that it changed and never when it did not; values out of range are clamped and values that are
// not numbers or not allowed refused, each with a warning; and what each does on screen and in the
// record.
#include "pad_twins.h"

#include <scrivlet/log.h>
#include <scrivlet/scrivlet_controller.h>

#include <QMetaProperty>
#include <QRegularExpression>

#include <map>

namespace scrivlet {
namespace {

using namespace qt_test;

// The warnings the library's log sink is given while this lives (nothing reaches standard error).
class Warnings {
 public:
  Warnings() {
    setLogSink([this](LogLevel level, std::string_view line) {
      if (level == LogLevel::warning) log_.append(QString::fromUtf8(line.data(), qsizetype(line.size())));
    });
  }
  ~Warnings() { setLogSink({}); }
  QStringList take() { return std::exchange(log_, {}); }

 private:
  QStringList log_;
};

SignatureSession& sessionOf(QObject* pad) {
  if (auto* widget = qobject_cast<SignaturePad*>(pad)) return widget->session();
  return qobject_cast<SignatureArea*>(pad)->session();
}

// Another value of a setting than its present one.
QVariant another(const QMetaProperty& property, const QVariant& now) {
  switch (now.metaType().id()) {
    case QMetaType::Bool: return !now.toBool();
    case QMetaType::Double: return now.toDouble() == 1 ? 0.5 : 1.0;
    case QMetaType::QColor: return QColor(now.value<QColor>() == Qt::red ? Qt::blue : Qt::red);
    case QMetaType::QString: return now.toString() == "A-1" ? "B-2" : "A-1";
    default: return property.isEnumType() ? QVariant(now.toInt() == 1 ? 2 : 1) : QVariant();
  }
}

// Values compared as QML compares them: an enumeration as its number.
bool same(const QVariant& a, const QVariant& b) {
  return a.metaType().flags() & QMetaType::IsEnumeration || b.metaType().flags() & QMetaType::IsEnumeration
             ? a.toInt() == b.toInt()
             : a == b;
}

TEST_F(Twins, EverySettingSaysOnceThatItChangedAndNothingWhenSetToWhatItIs) {
  for (const Twin& twin : twins_) {
    const QMetaObject* type = twin.pad->metaObject();
    std::map<QString, std::unique_ptr<QSignalSpy>> notified;
    std::vector<QMetaProperty> settings;
    for (int i = type->propertyOffset(); i < type->propertyCount(); ++i) {
      QMetaProperty property = type->property(i);
      if (!property.hasNotifySignal()) continue;
      notified[property.name()] = std::make_unique<QSignalSpy>(twin.pad, property.notifySignal());
      if (property.isWritable() && property.name() != QLatin1String("strokesJson")) settings.push_back(property);
    }
    EXPECT_EQ(settings.size(), 21u) << twin.name;
    for (const QMetaProperty& property : settings) {
      const QVariant before = property.read(twin.pad), value = another(property, before);
      ASSERT_TRUE(value.isValid()) << twin.name << " " << property.name();
      ASSERT_TRUE(property.write(twin.pad, value)) << twin.name << " " << property.name();
      EXPECT_TRUE(same(property.read(twin.pad), value)) << twin.name << " " << property.name();
      ASSERT_TRUE(property.write(twin.pad, value));  // the same again: nothing to say
      for (auto& [name, spy] : notified) {
        const std::string told = twin.name + std::string(": ") + property.name() + " told " + name.toStdString();
        EXPECT_EQ(spy->size(), name == property.name() ? 1 : 0) << told;
        if (name == property.name() && !spy->isEmpty()) {
          EXPECT_TRUE(same(spy->first().at(0), value)) << told;  // the new value
        }
      }
      property.write(twin.pad, before);
      for (auto& [name, spy] : notified) spy->clear();
    }
  }
}

TEST_F(Twins, SettingsOutOfRangeAreClampedAndNonNumbersAndBadValuesRefusedWithAWarning) {
  struct Case { const char* property; QVariant value, kept; const char* warning; };
  const char* const kHashRefused = "Scrivlet: custom hash refused: only up to 64 letters, digits, '.', '_' and '-'";
  const Case cases[] = {
      {"penWidth", 0.1, 0.5, "Scrivlet: pen width 0.1 clamped to 0.5"},
      {"penWidth", 100.0, 50.0, "Scrivlet: pen width 100 clamped to 50"},
      {"penWidth", NAN, 50.0, "Scrivlet: pen width nan refused: not a finite number"},
      {"velocityReduction", -0.5, 0.0, "Scrivlet: velocity reduction -0.5 clamped to 0"},
      {"velocityReduction", 1.5, 1.0, "Scrivlet: velocity reduction 1.5 clamped to 1"},
      {"exportScale", 0.0, 0.1, "Scrivlet: export scale 0 clamped to 0.1"},
      {"exportScale", 9.0, 8.0, "Scrivlet: export scale 9 clamped to 8"},
      {"exportScale", -INFINITY, 8.0, "Scrivlet: export scale -inf refused: not a finite number"},
      // Widths reach 53 at most: the widest pen at full pressure.
      {"minWidth", -1.0, 0.0, "Scrivlet: minimum width -1 clamped to 0"},  // clamped to what it is: no change
      {"minWidth", 60.0, 53.0, "Scrivlet: minimum width 60 clamped to 53"},
      {"maxWidth", 100.0, 53.0, "Scrivlet: maximum width 100 clamped to 53"},
      {"dotSize", NAN, 0.0, "Scrivlet: dot size nan refused: not a finite number"},
      {"dotSize", 53.5, 53.0, "Scrivlet: dot size 53.5 clamped to 53"},
      {"penColor", QColor(), QColor(Qt::black), "Scrivlet: pen colour refused: not a valid colour"},
      {"backgroundColor", QColor(), QColor(Qt::white), "Scrivlet: background colour refused: not a valid colour"},
      // The SVG carries the hash unescaped: letters, digits, '.', '_' and '-', up to 64 of them.
      {"customHash", "<b>", "", kHashRefused},
      {"customHash", QString(65, 'a'), "", kHashRefused},
      {"customHash", QString(64, 'a'), QString(64, 'a'), nullptr},
      {"customHash", "a b", QString(64, 'a'), kHashRefused},
      {"resizePolicy", 7, 0, "Scrivlet: resize policy 7 refused"},
  };
  for (const Twin& twin : twins_) {
    Warnings warnings;
    for (const Case& k : cases) {
      twin.pad->setProperty(k.property, k.value);
      QVariant kept = twin.pad->property(k.property);
      if (QString(k.property) == "resizePolicy") kept = kept.toInt();
      EXPECT_EQ(kept, k.kept) << twin.name << " " << k.property << " " << k.value.toString().toStdString();
      QStringList said = warnings.take();
      EXPECT_EQ(said, k.warning ? QStringList{k.warning} : QStringList()) << twin.name << " " << k.property;
    }
    // The engine has what was kept, in single precision.
    const QnScrivletController& engine = *sessionOf(twin.pad).scrivlet().scrivletController();
    EXPECT_EQ(std::tuple(sessionOf(twin.pad).scrivlet().strokeWidth(), engine.velocityReduction(), engine.exportScale(),
                         engine.customHash()),
              std::tuple(50.0f, 1.0f, 8.0f, std::optional(std::string(64, 'a'))))
        << twin.name;
    twin.pad->setProperty("customHash", "");  // empty: the generated hash again
    EXPECT_EQ(engine.customHash(), std::nullopt) << twin.name;
  }
}

// What the on/off settings do: on screen, in the widths drawn, and in the record (its SVG's texts, its
// frame, its PDF).
TEST_F(Twins, StampsClippingSkippingThePdfAHiddenGuidelineAndTheCalligraphicBrushShow) {
  for (const Twin& twin : twins_) {
    play(twin.window, wave(Sample::finger, 12, 60, 1000));
    twin.pad->setProperty("calligraphic", true);
    play(twin.window, wave(Sample::finger, 12, 140, 2000));
    QnStrokeListRef strokes = twin.strokes();
    auto inkOf = [&](int s) {  // the widths of a stroke's fast part, after the first points
      float sum = 0;
      for (size_t i = 4; i < strokes->at(s)->size(); ++i) sum += strokes->at(s)->at(i).diameter;
      return sum;
    };
    EXPECT_GT(inkOf(1), 2 * inkOf(0)) << twin.name;  // speed thins a calligraphic pen by a third as much
    for (const char* on : {"dateStamp", "timeStamp", "hashStamp", "clipToBounds", "skipPdf"})
      twin.pad->setProperty(on, true);
    twin.pad->setProperty("customHash", "H-1"), twin.pad->setProperty("guidelineVisible", false);
    EXPECT_FALSE(inked(twin.grab(), 200, 133)) << twin.name;  // where the signing line was
    SignatureRecord record = recordOf(twin.pad);
    EXPECT_EQ(std::pair(record.pdf().isEmpty(), record.frame()), std::pair(true, QRectF(0, 0, 400, 200))) << twin.name;
    EXPECT_TRUE(record.svg().contains(">H-1</text>")) << twin.name;
    EXPECT_TRUE(record.svg().contains(QRegularExpression(QString::number(QDate::currentDate().year()) + ".*</text>")))
        << twin.name;
    EXPECT_TRUE(record.svg().contains(QRegularExpression("\\d:\\d\\d:\\d\\d.*</text>"))) << twin.name;  // with the time
  }
}

// The record's PNG, decoded from its bytes: transparent around the ink, or painted on the background
// colour as it is at done().
TEST_F(Twins, TheRecordsPngIsPaintedOnTheBackgroundColourOnlyWhenAskedTo) {
  for (const Twin& twin : twins_) {
    play(twin.window, wave(Sample::pen, 10, 80, 1000));
    auto corner = [&] {
      QImage png = QImage::fromData(recordOf(twin.pad).png(), "PNG");
      EXPECT_FALSE(png.isNull()) << twin.name;
      return png.isNull() ? QColor() : png.pixelColor(0, 0);
    };
    EXPECT_EQ(corner().alpha(), 0) << twin.name;
    twin.pad->setProperty("backgroundColor", QColor(250, 240, 200));
    EXPECT_EQ(twin.grab().pixelColor(390, 10), QColor(250, 240, 200)) << twin.name;  // shown at once
    EXPECT_EQ(corner().alpha(), 0) << twin.name;  // the colour alone does not reach the record
    twin.pad->setProperty("backgroundInRecord", true);
    EXPECT_EQ(corner(), QColor(250, 240, 200)) << twin.name;
    twin.pad->setProperty("backgroundColor", QColor(0, 128, 255));
    EXPECT_EQ(corner(), QColor(0, 128, 255)) << twin.name;
    twin.pad->setProperty("backgroundInRecord", false);
    EXPECT_EQ(corner().alpha(), 0) << twin.name;
  }
}

}  // namespace
}  // namespace scrivlet
