#include "power/BatteryBackupCfg.h"

#include "frame/SscTrace.h"
#include "ose/Format.h"

using namespace ssc_trace;

namespace {

constexpr unsigned kPrintLevel = kInfo;
// The float formatter's buffer for one value.
constexpr std::size_t kFloatText = 30;

void printFloat(const char* line, float value)
{
    char text[kFloatText];
    ose::floatToString(text, sizeof text, value, 2);
    SSC_TRACE(powerGroup(), kPrintLevel, line, text);
}

// A text field may fill its bytes without a NUL; the precision keeps the
// trace inside the field.
template <std::size_t N>
void printText(const char* line, const char (&text)[N])
{
    SSC_TRACE(powerGroup(), kPrintLevel, line, static_cast<int>(N), text);
}

// The twelve month entries as decimal numbers joined by commas, "0,1,0,...",
// so that the whole schedule reads on the one line of the field.
void printMonths(const std::array<std::uint32_t, BatteryBackupCfg::kMonths>& months)
{
    char text[BatteryBackupCfg::kMonths * 11 + 1] = {};
    std::size_t used = 0;
    for (std::size_t month = 0; month < months.size(); ++month) {
        const int written = ose::snprintf(text + used, sizeof text - used, month == 0 ? "%u" : ",%u", months[month]);
        if (written < 0) break;
        used += static_cast<std::size_t>(written);
        if (used >= sizeof text) break;
    }
    SSC_TRACE(powerGroup(), kPrintLevel, " TestStartMonths = %s", text);
}

void printCharging(const BatteryBackupCfg& cfg)
{
    SSC_TRACE(powerGroup(), kPrintLevel, " ChargingMode = %s",
              cfg.chargingMode == BatteryBackupCfg::kChargingModeUserDefined ? "USER_DEFINED" : "AUTOMATIC");
    SSC_TRACE(powerGroup(), kPrintLevel, " ChargeMaxCurrent = %d", cfg.chargeMaxCurrent);
    SSC_TRACE(powerGroup(), kPrintLevel, " BatteryDisconnectTemp = %d", cfg.batteryDisconnectTemp);
    SSC_TRACE(powerGroup(), kPrintLevel, " BatteryDisconnectTempCeaseOffset = %d",
              cfg.batteryDisconnectTempCeaseOffset);
    printFloat(" ChargingVoltage = %s", cfg.chargingVoltage);
    printFloat(" TempCompVoltageSlope = %s", cfg.tempCompVoltageSlope);
    printFloat(" NominalTemp = %s", cfg.nominalTemp);
    printFloat(" TempCompMinVoltage = %s", cfg.tempCompMinVoltage);
    printFloat(" TempCompMaxVoltage = %s", cfg.tempCompMaxVoltage);
    printFloat(" IncreasedChargeVoltage = %s", cfg.increasedChargeVoltage);
    SSC_TRACE(powerGroup(), kPrintLevel, " BoostChargeTime = %d", static_cast<int>(cfg.boostChargeTime));
    printFloat(" BoostChargeTriggerVoltage = %s", cfg.boostChargeTriggerVoltage);
    SSC_TRACE(powerGroup(), kPrintLevel, " EqualizeChargeTime = %d", static_cast<int>(cfg.equalizeChargeTime));
    SSC_TRACE(powerGroup(), kPrintLevel, " EqualizeChargeCyclicInterval = %d", cfg.equalizeChargeCyclicInterval);
    printFloat(" IntermittentChargeConnectVoltage = %s", cfg.intermittentChargeConnectVoltage);
    SSC_TRACE(powerGroup(), kPrintLevel, " IntermittentChargeConnectTime = %d",
              static_cast<int>(cfg.intermittentChargeConnectTime));
    SSC_TRACE(powerGroup(), kPrintLevel, " IntermittentChargeDisconnectTime = %d",
              cfg.intermittentChargeDisconnectTime);
}

void printTest(const BatteryBackupCfg& cfg)
{
    SSC_TRACE(powerGroup(), kPrintLevel, " SharedBattery = %d", cfg.sharedBattery);
    SSC_TRACE(powerGroup(), kPrintLevel, " TestMode = %d", static_cast<int>(cfg.testMode));
    SSC_TRACE(powerGroup(), kPrintLevel, " TestStartDay = %d", static_cast<int>(cfg.testStartDay));
    printText(" TestStartTime = %.*s", cfg.testStartTime);
    SSC_TRACE(powerGroup(), kPrintLevel, " NumberOfTestMonths = %d", static_cast<int>(cfg.numberOfTestMonths));
    printMonths(cfg.testStartMonths);
}

void printCapacity(const BatteryBackupCfg& cfg)
{
    SSC_TRACE(powerGroup(), kPrintLevel, " LastNominalBatteryCapacity = %d", cfg.lastNominalBatteryCapacity);
    printText(" BatteryInstallationDate = %.*s", cfg.batteryInstallationDate);
    SSC_TRACE(powerGroup(), kPrintLevel, " MinimumStateOfHealth = %d", static_cast<int>(cfg.minimumStateOfHealth));
    SSC_TRACE(powerGroup(), kPrintLevel, " MinimumBackupTime = %d", static_cast<int>(cfg.minimumBackupTime));
    SSC_TRACE(powerGroup(), kPrintLevel, " ReferenceBatteryCapacity = %d", cfg.referenceBatteryCapacity);
    printText(" NextScheduledBatteryTestDate = %.*s", cfg.nextScheduledBatteryTestDate);
    SSC_TRACE(powerGroup(), kPrintLevel, " EstimatedRemainingBatteryBackup = %d",
              static_cast<int>(cfg.estimatedRemainingBatteryBackup));
    printFloat(" TotalDischargeCapacity = %s", cfg.totalDischargeCapacity);
    SSC_TRACE(powerGroup(), kPrintLevel, " RechargeTime = %d", static_cast<int>(cfg.rechargeTime));
    printText(" LastBatteryTestDate = %.*s", cfg.lastBatteryTestDate);
}

bool isLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysInMonth(int year, int month)
{
    constexpr std::array<int, 12> kDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

// The number of `count` digits from `text`; -1 when one of them is no digit.
int digitsAt(const char* text, std::size_t count)
{
    int value = 0;
    for (std::size_t index = 0; index < count; ++index) {
        if (text[index] < '0' || text[index] > '9') return -1;
        value = value * 10 + (text[index] - '0');
    }
    return value;
}

// Eight digits and the end of the text; a ninth character is no date.
bool isDate(const char (&text)[BatteryBackupCfg::kDateSize], BatteryBackupCfg::Date& date)
{
    constexpr std::size_t kDigits = 8;
    if (text[kDigits] != '\0') return false;
    const int year = digitsAt(text, 4);
    const int month = digitsAt(text + 4, 2);
    const int day = digitsAt(text + 6, 2);
    if (year < 1 || month < 1 || month > 12 || day < 1 || day > daysInMonth(year, month)) return false;
    date = {year, month, day};
    return true;
}

} // namespace

void BatteryBackupCfg::print() const
{
    // Nothing to format when nobody reads it.
    if (!ose::Trace::enabled(powerGroup(), kPrintLevel)) return;
    printCharging(*this);
    printTest(*this);
    printCapacity(*this);
}

bool BatteryBackupCfg::parseDate(const char (&text)[kDateSize], Date& date)
{
    // An empty text is a date not set yet: no date, but nothing wrong either.
    if (text[0] == '\0') return false;
    if (!isDate(text, date)) {
        SSC_TRACE(powerGroup(), kUnexpected, "parseDate: malformed date %.*s", static_cast<int>(kDateSize), text);
        return false;
    }
    return true;
}
