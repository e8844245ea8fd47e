// Byte-level pieces of ISO 9660: dates.
#include "export/simulator/iso_format.h"

#include <cstdio>

namespace uc::disc {

// Days-from-civil and its inverse (proleptic Gregorian calendar), exact for the whole int64 range used here.
CivilTime ToCivil(std::int64_t seconds) {
    std::int64_t days = seconds / 86400;
    std::int64_t rest = seconds % 86400;
    if (rest < 0) {
        rest += 86400;
        --days;
    }
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const std::int64_t doe = days - era * 146097;
    const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const std::int64_t mp = (5 * doy + 2) / 153;
    const int day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    const int month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    const int year = static_cast<int>(yoe + era * 400 + (month <= 2 ? 1 : 0));
    return {year, month, day, static_cast<int>(rest / 3600), static_cast<int>(rest / 60 % 60), static_cast<int>(rest % 60)};
}

std::int64_t FromCivil(int year, int month, int day, int hour, int minute, int second) {
    const std::int64_t y = year - (month <= 2 ? 1 : 0);
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const std::int64_t yoe = y - era * 400;
    const std::int64_t doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    const std::int64_t days = era * 146097 + doe - 719468;
    return days * 86400 + hour * 3600 + minute * 60 + second;
}

void PutRecordDate(std::uint8_t* p, std::int64_t seconds) {
    const std::int64_t low = FromCivil(1900, 1, 1, 0, 0, 0), high = FromCivil(2155, 12, 31, 23, 59, 59);
    const CivilTime t = ToCivil(seconds < low ? low : seconds > high ? high : seconds);
    p[0] = static_cast<std::uint8_t>(t.year - 1900);
    p[1] = static_cast<std::uint8_t>(t.month);
    p[2] = static_cast<std::uint8_t>(t.day);
    p[3] = static_cast<std::uint8_t>(t.hour);
    p[4] = static_cast<std::uint8_t>(t.minute);
    p[5] = static_cast<std::uint8_t>(t.second);
    p[6] = 0;
}

std::int64_t GetRecordDate(const std::uint8_t* p) {
    if (p[1] < 1 || p[1] > 12 || p[2] < 1 || p[2] > 31 || p[3] > 23 || p[4] > 59 || p[5] > 59) return 0;
    const auto offset = static_cast<std::int8_t>(p[6]);  // 15-minute units east of UTC
    return FromCivil(1900 + p[0], p[1], p[2], p[3], p[4], p[5]) - offset * 15 * 60;
}

void PutVolumeDate(std::uint8_t* p, std::int64_t seconds) {
    const std::int64_t low = FromCivil(1, 1, 1, 0, 0, 0), high = FromCivil(9999, 12, 31, 23, 59, 59);
    const CivilTime t = ToCivil(seconds < low ? low : seconds > high ? high : seconds);
    char text[20];
    std::snprintf(text, sizeof text, "%04d%02d%02d%02d%02d%02d00", t.year, t.month, t.day, t.hour, t.minute, t.second);
    for (int i = 0; i < 16; ++i) p[i] = static_cast<std::uint8_t>(text[i]);
    p[16] = 0;
}

}  // namespace uc::disc
