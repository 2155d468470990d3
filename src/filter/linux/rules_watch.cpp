#include "filter/linux/rules_watch.h"

#include <fcntl.h>
#include <libmnl/libmnl.h>
#include <linux/netfilter/nf_tables.h>
#include <linux/netfilter/nfnetlink.h>

#include <cerrno>
#include <cstring>
#include <vector>

namespace orvanta::filter {

namespace {

bool isRemoval(const nlmsghdr* message)
{
    constexpr int typeBits = 0xff; // above them stands whose message it is
    switch (message->nlmsg_type & typeBits) {
    case NFT_MSG_DELTABLE:
    case NFT_MSG_DELCHAIN:
    case NFT_MSG_DELRULE:
        return true;
    default:
        return false;
    }
}

} // namespace

std::expected<RulesWatch, std::string> RulesWatch::open()
{
    Socket socket(mnl_socket_open2(NETLINK_NETFILTER, SOCK_CLOEXEC | SOCK_NONBLOCK), &mnl_socket_close);
    if (!socket || mnl_socket_bind(socket.get(), 1U << (NFNLGRP_NFTABLES - 1U), MNL_SOCKET_AUTOPID) < 0)
        return std::unexpected(std::string("changes of the kernel's rules cannot be heard: ") + std::strerror(errno));
    return RulesWatch(std::move(socket));
}

RulesWatch::RulesWatch(Socket socket) : m_socket(std::move(socket)) { }

int RulesWatch::descriptor() const
{
    return mnl_socket_get_fd(m_socket.get());
}

bool RulesWatch::take()
{
    bool mayHaveGone = false;
    std::vector<char> buffer(static_cast<std::size_t>(MNL_SOCKET_BUFFER_SIZE));
    for (;;) {
        const auto received = mnl_socket_recvfrom(m_socket.get(), buffer.data(), buffer.size());
        if (received <= 0)
            return mayHaveGone || (received < 0 && errno == ENOBUFS);
        int left = static_cast<int>(received);
        for (const auto* message = reinterpret_cast<const nlmsghdr*>(buffer.data()); mnl_nlmsg_ok(message, left);
            message = mnl_nlmsg_next(message, &left))
            mayHaveGone = mayHaveGone || isRemoval(message);
    }
}

} // namespace orvanta::filter
