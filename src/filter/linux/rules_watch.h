#pragma once

#include <expected>
#include <memory>
#include <string>

struct mnl_socket;

namespace orvanta::filter {

/// Hears that rules of nftables were taken away, by whomever: a firewall that starts anew may take everybody's.
class RulesWatch {
public:
    [[nodiscard]] static std::expected<RulesWatch, std::string> open();

    /// Readable when there is something to hear.
    [[nodiscard]] int descriptor() const;

    /// Takes in what there is to hear. True if rules may have gone, also when there was more than could be kept for us.
    [[nodiscard]] bool take();

private:
    using Socket = std::unique_ptr<mnl_socket, int (*)(mnl_socket*)>;

    explicit RulesWatch(Socket socket);

    Socket m_socket;
};

} // namespace orvanta::filter
