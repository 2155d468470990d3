#pragma once

#include <optional>
#include <string>

namespace orvanta::bench {

/// What a bare cover is told through a pipe with a name, a byte each: "s" to show itself, "h" to hide. It spares the bare cover
/// to find out by itself which application is in front, which differs from desktop to desktop.
class Told {
public:
    /// Ends the program with a line on standard error if there is no such pipe.
    explicit Told(const std::string& pipe);
    ~Told();
    Told(const Told&) = delete;
    Told& operator=(const Told&) = delete;

    /// Readable when something was told.
    [[nodiscard]] int descriptor() const { return m_descriptor; }

    /// Whether to be shown, as was told last; nothing if nothing was told since. Does not wait.
    [[nodiscard]] std::optional<bool> take();

    /// Tells whoever reads.
    void tell(bool isToBeShown) const;

private:
    int m_descriptor;
};

} // namespace orvanta::bench
