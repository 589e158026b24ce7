// Number formatting gives C's results whatever locale the host process has set.
#include "platform/format.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace scrivlet {
namespace {

TEST(Format, GivesCResultsForEveryFormatTheOutputsUse) {
  EXPECT_EQ(formatF(6), "6.000000");
  EXPECT_EQ(formatF(1e20), "100000000000000000000.000000");
  EXPECT_EQ(formatD(-42), "-42");
  EXPECT_EQ(formatHd(32767), "32767");
  EXPECT_EQ(formatHd(-32769), "32767");  // wraps to 16 bits
  EXPECT_EQ(formatHd(40000), "-25536");
  EXPECT_EQ(formatHu(65535), "65535");
  EXPECT_EQ(formatHu(-1), "65535");
  EXPECT_EQ(formatHu(65536), "0");
  EXPECT_EQ(format02lX(128), "80");
  EXPECT_EQ(format02lX(5), "05");
  EXPECT_EQ(format02lX(383), "17F");
  EXPECT_EQ(format02x(0xAB), "ab");
  EXPECT_EQ(format02x(7), "07");
  EXPECT_EQ(formatLu(18446744073709551615ul), "18446744073709551615");
  EXPECT_EQ(cformat("%s-%f", "a", 0.5), "a-0.500000");
  std::string longText(300, 'x');
  EXPECT_EQ(cformat("%s%f", longText.c_str(), 1.0), longText + "1.000000");
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
  std::setlocale(LC_ALL, saved.c_str());
}

}  // namespace
}  // namespace scrivlet
