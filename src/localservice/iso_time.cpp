#include "localservice/iso_time.h"

#include <QDateTime>

#include <algorithm>

namespace orvanta::localservice {

namespace {

bool isDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

/// Checks the fixed part letter by letter: '0' in the pattern stands for any digit.
bool matches(std::string_view text, std::string_view pattern)
{
    return text.size() == pattern.size()
        && std::ranges::equal(text, pattern, [](char letter, char wanted) { return wanted == '0' ? isDigit(letter) : letter == wanted; });
}

int number(std::string_view digits)
{
    int value = 0;
    for (const char digit : digits)
        value = value * 10 + (digit - '0');
    return value;
}

/// Milliseconds of ".123456"; absent if it is not a point and one to nine digits.
std::optional<int> fraction(std::string_view text)
{
    if (text.size() < 2 || text.size() > 10 || text.front() != '.' || !std::ranges::all_of(text.substr(1), isDigit))
        return std::nullopt;
    std::string digits(text.substr(1));
    digits.resize(3, '0');
    return number(digits);
}

} // namespace

std::optional<UtcTime> utcTimeFromIso(std::string_view text)
{
    constexpr std::string_view pattern = "0000-00-00T00:00:00";
    if (text.size() <= pattern.size() || text.back() != 'Z' || !matches(text.substr(0, pattern.size()), pattern))
        return std::nullopt;
    int milliseconds = 0;
    if (const auto rest = text.substr(pattern.size(), text.size() - pattern.size() - 1); !rest.empty()) {
        const auto parsed = fraction(rest);
        if (!parsed)
            return std::nullopt;
        milliseconds = *parsed;
    }

    using namespace std::chrono;
    const year_month_day date { year { number(text.substr(0, 4)) }, month { static_cast<unsigned>(number(text.substr(5, 2))) },
        day { static_cast<unsigned>(number(text.substr(8, 2))) } };
    const int hour = number(text.substr(11, 2));
    const int minute = number(text.substr(14, 2));
    const int second = number(text.substr(17, 2));
    if (!date.ok() || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    return sys_days { date } + hours { hour } + minutes { minute } + seconds { second } + std::chrono::milliseconds { milliseconds };
}

QString isoFromUtcTime(UtcTime time)
{
    return QDateTime::fromMSecsSinceEpoch(time.time_since_epoch().count(), Qt::UTC).toString(Qt::ISODateWithMs);
}

} // namespace orvanta::localservice
