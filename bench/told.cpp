#include "told.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace orvanta::bench {

namespace {

constexpr char shown = 's';
constexpr char hidden = 'h';

} // namespace

// For reading and writing, so that it stays open while nobody else has it.
Told::Told(const std::string& pipe) : m_descriptor(open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC))
{
    if (m_descriptor < 0) {
        std::fprintf(stderr, "There is no pipe %s.\n", pipe.c_str());
        std::exit(EXIT_FAILURE);
    }
}

Told::~Told()
{
    close(m_descriptor);
}

std::optional<bool> Told::take()
{
    std::optional<bool> last;
    char byte = 0;
    while (read(m_descriptor, &byte, 1) == 1)
        last = byte == shown;
    return last;
}

void Told::tell(bool isToBeShown) const
{
    const char byte = isToBeShown ? shown : hidden;
    if (write(m_descriptor, &byte, 1) != 1)
        std::fprintf(stderr, "Nothing can be told.\n");
}

} // namespace orvanta::bench
