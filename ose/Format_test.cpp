#include "ose/Format.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdlib>
#include <string>

namespace ose {
namespace {

// Formats without the compiler's check of the arguments, for inputs that the
// check would refuse at compile time but that may reach us at run time.
std::string unchecked(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    std::string out = ose::vformat(format, args);
    va_end(args);
    return out;
}

TEST(FormatTest, SnprintfCutsAlwaysEndsInNulAndReturnsTheWholeLength)
{
    char buffer[8];
    EXPECT_EQ(ose::snprintf(buffer, sizeof buffer, "SigNo: %d", 1704501), 14);
    EXPECT_STREQ(buffer, "SigNo: ");
    EXPECT_EQ(ose::snprintf(buffer, 1, "abc"), 3);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(ose::snprintf(nullptr, 0, "%s-%u", "abc", 12u), 6);
}

TEST(FormatTest, NilTextsAndPointersAndTheUsualConversions)
{
    const char* nil = nullptr;
    void* nilPointer = nullptr;
    EXPECT_EQ(unchecked("[%s] [%p] [%8s]", nil, nilPointer, nil), "[(null)] [(nil)] [  (null)]");
    EXPECT_EQ(ose::format("%-5d|%05d|%+d|%x|%#X|%o|%c|%%", 42, -42, 7, 255u, 255u, 8u, 'z'), "42   |-0042|+7|ff|0XFF|10|z|%");
    EXPECT_EQ(ose::format("%*d|%-*s|%.*s", 4, 7, 3, "a", 2, "abcdef"), "   7|a  |ab");
    EXPECT_EQ(ose::format("%hhd %hu %ld %lld %zu", 300, 70000, -5L, 1LL << 40, std::size_t{9}), "44 4464 -5 1099511627776 9");
    EXPECT_EQ(ose::format("%.2f %e", 1.5, 100.0), "1.50 1.000000e+02");
    EXPECT_EQ(ose::format("0x%08x %5.1f%%", 0x1704501u, 99.44), "0x01704501  99.4%");
}

TEST(FormatTest, QuoteFlagGroupsThousandsWhateverTheLocale)
{
    EXPECT_EQ(ose::format("%'d", 1234567), "1,234,567");
    EXPECT_EQ(ose::format("%'d", -1000), "-1,000");
    EXPECT_EQ(ose::format("%'d", 999), "999");
    EXPECT_EQ(ose::format("%'u", 4294967295u), "4,294,967,295");
    EXPECT_EQ(ose::format("[%'10d]", 12345), "[    12,345]");
    EXPECT_EQ(ose::format("[%-'8d]", 1000), "[1,000   ]");
}

TEST(FormatTest, AsprintfAllocatesExactlyTheText)
{
    char* text = nullptr;
    EXPECT_EQ(ose::asprintf(&text, "%s:%d", "file.cpp", 42), 11);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "file.cpp:42");
    std::free(text);
}

TEST(FormatTest, ATruncatedConversionIsPrintedAsItStands)
{
    EXPECT_EQ(unchecked("%s and %", "this"), "this and %");
}

TEST(FloatToStringTest, PrintsDigitByDigitWithTheSignFirst)
{
    EXPECT_EQ(floatToString(-54.5f), "-54.50");
    EXPECT_EQ(floatToString(0.29f), "0.29");
    EXPECT_EQ(floatToString(1.005f), "1.00") << "digits are truncated, not rounded";
    EXPECT_EQ(floatToString(999.0f), "999.00");
    EXPECT_EQ(floatToString(-0.001f), "-0.00") << "the sign of a small negative value stays";
    EXPECT_EQ(floatToString(0.00012f, 5), "0.00012");
    EXPECT_EQ(floatToString(0.99999994f, 2), "0.99") << "a remainder just under 1 never makes a digit of 10";
    EXPECT_EQ(floatToString(3.0e9f, 1), "3000000000.0") << "no overflow beyond 2^31";
    EXPECT_EQ(floatToString(12.5f, 0), "12.");
}

TEST(FloatToStringTest, NeverWritesPastTheBufferAndAlwaysEndsInNul)
{
    char buffer[6];
    floatToString(buffer, sizeof buffer, -127.125f, 3);
    EXPECT_STREQ(buffer, "-127.");
    char one[1] = {'x'};
    floatToString(one, sizeof one, 1.0f, 2);
    EXPECT_EQ(one[0], '\0');
    EXPECT_EQ(floatToString(0.0f / 0.0f), "nan");
}

} // namespace
} // namespace ose
