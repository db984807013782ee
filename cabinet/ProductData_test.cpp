#include "cabinet/ProductData.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

ProductData withSerial(const char* serial) { return ProductData("", "", "", "", serial); }

TEST(ProductDataTest, OnlyASerialOfUpperCaseLettersAndDigitsWithoutIAndOMakesTheIdentityValid)
{
    EXPECT_TRUE(withSerial("CAB00000001").isValid());
    EXPECT_TRUE(withSerial("9").isValid());
    for (const char* serial : {"", "CAB0O001", "CABI0001", "cab00001", "CAB 0001", "CAB-0001", "\xC3\x84"})
        EXPECT_FALSE(withSerial(serial).isValid()) << '"' << serial << '"';
    // The other fields do not count.
    EXPECT_FALSE(ProductData("BFD 101 001/1", "R1A", "CABINET", "20260101", "").isValid());
}

TEST(ProductDataTest, TheScuRecordCutsLongTextsToItsFieldsAndReadsFieldsFilledToTheLastByte)
{
    const ProductData pid("BFD 101 001/1 and far too much", "R1A", "CABINET", "20260101", "CAB00000000001");
    const HwuProductRecord record = pid.toRecord();
    EXPECT_EQ(std::memcmp(record.serialNumber.data(), "CAB00000000001", 14), 0);
    const ProductData back = ProductData::fromRecord(record);
    EXPECT_EQ(back.productNumber, "BFD 101 001/1 and far too");
    EXPECT_EQ(back.serialNumber, "CAB00000000001");
    EXPECT_EQ(back.productName, "CABINET");
    EXPECT_NE(back, pid);
}

} // namespace
