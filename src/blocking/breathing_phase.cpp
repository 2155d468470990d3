#include "blocking/breathing_phase.h"

#include <cmath>

namespace orvanta {

double BreathingPhase::level(double secondsSinceReferenceDate)
{
    constexpr double breath = 10;
    constexpr double inBreath = 4;
    double phase = std::fmod(secondsSinceReferenceDate, breath);
    if (phase < 0)
        phase += breath;
    if (phase < inBreath)
        return phase * 0.25;
    return (phase - inBreath) / -6 + 1;
}

double BreathingPhase::secondsSinceReferenceDate(std::chrono::system_clock::time_point time)
{
    using namespace std::chrono;
    constexpr sys_days referenceDate = 2001y / January / 1;
    return duration<double>(time - referenceDate).count();
}

} // namespace orvanta
