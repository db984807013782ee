#pragma once
// A cabinet's product identity: product number, revision, name, production
// date and serial number. The serial number alone decides whether an
// identity is real: an SCU with empty or erased memory, or a configuration
// without identity, gives one that is not.

#include "hwu/HwuStatusRecord.h"

#include <string>

class ProductData {
public:
    ProductData() = default;
    ProductData(std::string number, std::string revision, std::string name, std::string date, std::string serial);

    // The fixed fields of the SCU's memory; a field filled to its last byte
    // carries no NUL.
    static ProductData fromRecord(const HwuProductRecord& record);
    // Each text cut to its field and NUL-padded.
    HwuProductRecord toRecord() const;

    void clear() { *this = ProductData(); }
    // The serial number is not empty and holds only upper case letters and
    // digits, without "I" and "O", which are too easily read as 1 and 0.
    bool isValid() const;

    friend bool operator==(const ProductData&, const ProductData&) = default;

    std::string productNumber;
    std::string revState;
    std::string productName;
    std::string productionDate;
    std::string serialNumber;
};
