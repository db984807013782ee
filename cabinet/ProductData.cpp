#include "cabinet/ProductData.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

template <std::size_t N>
std::string textOf(const std::array<char, N>& field)
{
    return std::string(field.data(), strnlen(field.data(), N));
}

template <std::size_t N>
void putText(std::array<char, N>& field, const std::string& text)
{
    field.fill('\0');
    std::memcpy(field.data(), text.data(), std::min(text.size(), N));
}

bool isSerialCharacter(char c)
{
    const bool upperOrDigit = (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    return upperOrDigit && c != 'I' && c != 'O';
}

} // namespace

ProductData::ProductData(std::string number, std::string revision, std::string name, std::string date,
                         std::string serial)
    : productNumber(std::move(number)),
      revState(std::move(revision)),
      productName(std::move(name)),
      productionDate(std::move(date)),
      serialNumber(std::move(serial))
{
}

ProductData ProductData::fromRecord(const HwuProductRecord& record)
{
    return ProductData(textOf(record.productNumber), textOf(record.revState), textOf(record.productName),
                       textOf(record.productionDate), textOf(record.serialNumber));
}

HwuProductRecord ProductData::toRecord() const
{
    HwuProductRecord record;
    putText(record.productNumber, productNumber);
    putText(record.revState, revState);
    putText(record.productName, productName);
    putText(record.productionDate, productionDate);
    putText(record.serialNumber, serialNumber);
    return record;
}

bool ProductData::isValid() const
{
    return !serialNumber.empty() && std::all_of(serialNumber.begin(), serialNumber.end(), isSerialCharacter);
}
