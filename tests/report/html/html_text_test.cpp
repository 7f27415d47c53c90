#include "orvane/report/html/html_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orvane/report/html/date_text.h"
#include "orvane/report/report_text.h"

namespace orvane {
namespace {

using namespace HTMLReportBuilder;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(ReportNumber, HasFixedDecimals) {
  EXPECT_EQ(ReportText::fixed(-13.25, 1), "-13.2");  // half to even, as printf
  EXPECT_EQ(ReportText::fixed(-13.35F, 1), "-13.4");
  EXPECT_EQ(ReportText::fixed(0.5, 0), "0");
  EXPECT_EQ(ReportText::fixed(-0.04, 1), "-0.0");
  EXPECT_EQ(ReportText::fixed(123456789.0, 3), "123456789.000");
  EXPECT_EQ(ReportText::fixed(1e300, 1).size(), 303U);
  EXPECT_EQ(ReportText::fixed(-kInfinity, 1), "-");
  EXPECT_EQ(ReportText::fixed(std::nan(""), 1), "-");
}

TEST(ReportNumber, HasNoSignAtZero) {
  EXPECT_EQ(ReportText::fixed(-0.0, 1), "0.0");
  EXPECT_EQ(ReportText::fixed(-0.0F, 2), "0.00");
  EXPECT_EQ(ReportText::signedFixed(-0.0F, 1), "+0.0");
}

TEST(ReportNumber, HasASignWhenAsked) {
  EXPECT_EQ(ReportText::signedFixed(1.25F, 1), "+1.2");
  EXPECT_EQ(ReportText::signedFixed(0.0F, 1), "+0.0");
  EXPECT_EQ(ReportText::signedFixed(-1.0F, 1), "-1.0");
}

TEST(PageNumber, IsADashWhenItIsMissing) {
  EXPECT_EQ(valueText(-14.04F, 1, " LUFS"), "-14.0 LUFS");
  EXPECT_EQ(valueText(std::nullopt, 1, " LUFS"), "-");
  EXPECT_EQ(valueText(static_cast<float>(-kInfinity), 1, " LUFS"), "-");
  EXPECT_EQ(valueText(std::nanf(""), 1, " LUFS"), "-");
}

TEST(PageText, HasEntitiesForMarkup) {
  EXPECT_EQ(escaped("<a href=\"x\">R&B 'n' more</a>"),
            "&lt;a href=&quot;x&quot;&gt;R&amp;B &#39;n&#39; more&lt;/a&gt;");
  EXPECT_EQ(escaped("&amp;"), "&amp;amp;");
}

TEST(PageText, ShowsWhatCouldDeceiveAReader) {
  EXPECT_EQ(escaped("a\x1B\x01\x7F\u202Egpj.exe"), "a\\u{1B}\\u{1}\\u{7F}\\u{202E}gpj.exe");
  EXPECT_EQ(escaped("\xC3(\xFF"), "\uFFFD(\uFFFD");
  EXPECT_EQ(escaped("line\nend\ttab\r"), "line\nend\ttab\r");
  EXPECT_EQ(escaped("F\u266F \u4E2D\u6587 \U0001F600"), "F\u266F \u4E2D\u6587 \U0001F600");
}

// Soft hyphens, the marks of Arabic and Hebrew and the flag of Wales were taken apart.
TEST(PageText, LeavesInvisibleCharactersThatTextsNeed) {
  for (const char* text :
       {"Donau\u00ADdampf", "a\u200Eb", "\u05D0\u200F!", "\u0627\u061C1",
        "\U0001F3F4\U000E0067\U000E0062\U000E0077\U000E006C\U000E0073\U000E007F"})
    EXPECT_EQ(escaped(text), text);
  EXPECT_EQ(escaped("\u200B\u2066\uFEFF\U000E0001"), "\\u{200B}\\u{2066}\\u{FEFF}\\u{E0001}");
}

TEST(PageDuration, IsInMinutesFromOneMinuteOn) {
  EXPECT_EQ(formatDuration(0), "0s");
  EXPECT_EQ(formatDuration(42.99), "42s");
  EXPECT_EQ(formatDuration(59.9), "59s");
  EXPECT_EQ(formatDuration(60), "1m 0s");
  EXPECT_EQ(formatDuration(187.5), "3m 7s");
  EXPECT_EQ(formatDuration(36000), "600m 0s");
}

TEST(PageDuration, IsNothingForWhatIsNoDuration) {
  for (const double seconds : {-1.0, -kInfinity, std::nan("")})
    EXPECT_EQ(formatDuration(seconds), "0s");
  EXPECT_EQ(formatDuration(kInfinity), "16666666666666m 40s");
}

TEST(PageFileSize, IsInMebibytesFromOneOn) {
  EXPECT_EQ(formatFileSize(0), "0 KB");
  EXPECT_EQ(formatFileSize(500 * 1024), "500 KB");
  EXPECT_EQ(formatFileSize(1024 * 1024 - 1), "1024 KB");
  EXPECT_EQ(formatFileSize(1024 * 1024), "1.0 MB");
  EXPECT_EQ(formatFileSize(10'500'000), "10.0 MB");
  EXPECT_EQ(formatFileSize(std::int64_t{5} << 30), "5120.0 MB");
}

TEST(PageSampleRate, IsInKilohertzFromOneOn) {
  EXPECT_EQ(formatSampleRate(44100), "44.1 kHz");
  EXPECT_EQ(formatSampleRate(1000), "1.0 kHz");
  EXPECT_EQ(formatSampleRate(999.9), "999 Hz");
  EXPECT_EQ(formatSampleRate(800), "800 Hz");
}

TEST(PageTimecode, HasHoursOnlyWhenThereAreAny) {
  EXPECT_EQ(formatTimecode(0), "0:00");
  EXPECT_EQ(formatTimecode(65.9), "1:05");
  EXPECT_EQ(formatTimecode(3599), "59:59");
  EXPECT_EQ(formatTimecode(3723), "1:02:03");
  EXPECT_EQ(formatTimecode(36000), "10:00:00");
  EXPECT_EQ(formatTimecode(-5), "0:00");
}

TEST(PageDate, FollowsLocaleAndTimeZone) {
  using namespace std::chrono;
  const Date date = sys_days(2026y / January / 5) + 15h + 4min;
  EXPECT_EQ(longDateText(date, {"de_DE", "UTC"}), "5. Januar 2026 um 15:04");
  EXPECT_EQ(longDateText(date, {"en_GB", "Asia/Tokyo"}), "6 January 2026 at 00:04");
}

TEST(PageDate, IsMadeForUnknownPlacesToo) {
  EXPECT_NE(longDateText({}, {"xx_nowhere", "Nowhere/Land"}), "");
  EXPECT_NE(longDateText({}, {}), "");
}

}  // namespace
}  // namespace orvane
