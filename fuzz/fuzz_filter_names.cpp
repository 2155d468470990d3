// What clients and name servers send: whatever it is, no parser reads past it, asks for less than it has, or gives a name
// that cannot be compared.

#include "filter/core/dns_answer.h"
#include "filter/core/host_name.h"
#include "filter/core/http_host.h"
#include "filter/core/tls_client_hello.h"

#include <cstdlib>

using namespace orvanta::filter;

namespace {

void check(const NameSearch& search)
{
    if (search.outcome == NameSearch::Outcome::found && comparableHost(search.name) != search.name)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Bytes bytes(reinterpret_cast<const std::byte*>(data), size);
    check(findHttpHost(bytes));
    check(findServerName(bytes));
    const NameSearch records = findServerNameInRecords(bytes);
    check(records);
    if (records.outcome == NameSearch::Outcome::incomplete && records.needed <= size)
        std::abort();
    if (const auto host = hostOfEntry(asText(bytes))) {
        const auto table = DomainTable::build(std::vector<std::string> { std::string(asText(bytes)) });
        if (table.entryCovering(*host) != *host || !table.entryCovering("www." + *host))
            std::abort();
    }
    static const DomainTable blocked = DomainTable::build(std::vector<std::string> { "a.example" });
    if (const auto answer = rewrittenAnswer(bytes, blocked); answer && answer->size() > size)
        std::abort();
    return 0;
}
