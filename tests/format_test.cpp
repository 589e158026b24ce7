// Number formatting gives C's results whatever locale the host process has set. (The 16-bit wrapping
// and hexadecimal formats show in the worked time-series documents and SVG colours.)
#include "platform/format.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>
#include <string>

namespace scrivlet {
namespace {

// The fast fixed-point formatting of drawing coordinates writes exactly what printf writes, ties
// (exact halves, which round to even) and extremes included, with every count of decimals.
TEST(Format, FixedPointWritesWhatPrintfWrites) {
  std::vector<double> values = {0.0, -0.0, 0.5, 1.5, 2.5, -2.5, 0.125, 0.375, 0.0625, 1e-7, 5e-7, 0.0000005,
                                0.0000015, 0.0000025, -0.0000005, 123.4567895, 2.5e-6, 4294967295.5,
                                4294967295.9999999, 4294967296.0, -4294967296.5, 1e15 + 0.5, 1e300, -1e300,
                                1.7976931348623157e308, 4.9e-324, INFINITY, -INFINITY, NAN, -NAN};
  std::mt19937_64 random(7);
  for (int i = 0; i < 20000; ++i) {
    uint64_t bits = random();
    double any;
    std::memcpy(&any, &bits, sizeof any);
    values.push_back(any);
    values.push_back(std::ldexp(double(random() % 100000000), -int(random() % 40)) - 1000.0);
    values.push_back(std::ldexp(double(random() % 2000001) - 1000000.0, -int(random() % 12)));  // halves
  }
  for (double v : values) {
    std::string fast = "x";
    appendF(fast, v);
    ASSERT_EQ(fast, "x" + cformat("%f", v)) << std::hexfloat << v;
    for (int decimals = 0; decimals <= 10; ++decimals) {
      char written[400];
      char* end = toCharsFixed(written, written + sizeof written, v, decimals);
      ASSERT_EQ(end != nullptr, std::isfinite(v));
      if (end) ASSERT_EQ(std::string(written, end), cformat("%.*f", decimals, v)) << std::hexfloat << v << " " << decimals;
    }
  }
  std::string longText(300, 'x');  // longer than any buffer on the stack
  EXPECT_EQ(cformat("%s%f", longText.c_str(), 1.0), longText + "1.000000");
}

// The time series's 16-bit values wrap as C's "%hd" and "%hu" wrap them.
TEST(Format, SixteenBitValuesWrapAsPrintfWrapsThem) {
  for (int v = -140000; v <= 140000; v += 7) {
    ASSERT_EQ(formatHd(v), cformat("%hd", static_cast<short>(v))) << v;
    ASSERT_EQ(formatHu(v), cformat("%hu", static_cast<unsigned short>(v))) << v;
  }
}

TEST(Format, IgnoresALocaleWithADecimalComma) {
  const char* previous = std::setlocale(LC_ALL, nullptr);
  std::string saved = previous ? previous : "C";
  const char* comma = nullptr;
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"})
    if (std::setlocale(LC_ALL, name)) {
      comma = name;
      break;
    }
  ASSERT_NE(comma, nullptr) << "no locale with a decimal comma is installed (scripts/setup.sh makes one)";
  char native[32];
  std::snprintf(native, sizeof native, "%f", 6.0);
  EXPECT_STREQ(native, "6,000000") << "the locale really uses a decimal comma";
  EXPECT_EQ(formatF(6.0), "6.000000");
  EXPECT_EQ(cformat("%f %f", 1.5, -2.25), "1.500000 -2.250000");
  std::string appended;
  appendF(appended, 6.0);
  EXPECT_EQ(appended, "6.000000");
  std::setlocale(LC_ALL, saved.c_str());
}

}  // namespace
}  // namespace scrivlet
