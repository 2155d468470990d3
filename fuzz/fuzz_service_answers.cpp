#include "service/focus_api_records.h"

#include <cstdlib>

using namespace orvanta;

/// What the service answers: any bytes give a record or an error, and a record that was taken can be told again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));

    const auto state = decodeFocusState(body);
    if (!state && state.error().description().isEmpty())
        std::abort();

    const auto policy = decodeFocusPolicy(body);
    if (!policy && policy.error().description().isEmpty())
        std::abort();

    // A domain that came over the wire can go back over it: decoding lets no text through that JSON cannot carry.
    if (policy) {
        for (const QString& domain : policy->blockedDomains) {
            if (!encodeMutation({ .action = FocusPolicyMutation::Action::removeDomain, .value = domain }))
                std::abort();
        }
    }
    return 0;
}
