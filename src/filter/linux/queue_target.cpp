#include "filter/linux/queue_target.h"

#include <arpa/inet.h>
#include <libmnl/libmnl.h>
#include <libnftnl/expr.h>
#include <libnftnl/rule.h>
#include <linux/netfilter.h>
#include <linux/netfilter/nf_tables.h>
#include <linux/netfilter/nf_tables_compat.h>
#include <linux/netfilter/nfnetlink.h>
#include <linux/netfilter/xt_NFQUEUE.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace orvanta::filter {

namespace {

constexpr std::size_t bufferSize = 8192;
constexpr std::size_t alignedTargetSize = 8; // the kernel takes the target's data in multiples of eight

std::unexpected<std::string> failure(const char* what)
{
    return std::unexpected(std::string(what) + ": " + std::strerror(errno));
}

nlmsghdr* batchMessage(char* buffer, std::uint16_t type, std::uint32_t sequence)
{
    nlmsghdr* header = mnl_nlmsg_put_header(buffer);
    header->nlmsg_type = type;
    header->nlmsg_flags = NLM_F_REQUEST;
    header->nlmsg_seq = sequence;
    auto* generic = static_cast<nfgenmsg*>(mnl_nlmsg_put_extra_header(header, sizeof(nfgenmsg)));
    generic->nfgen_family = NFPROTO_UNSPEC;
    generic->version = NFNETLINK_V0;
    generic->res_id = htons(NFNL_SUBSYS_NFTABLES);
    return header;
}

std::unique_ptr<nftnl_rule, void (*)(const nftnl_rule*)> queueRule(const std::string& table, const std::string& chain, std::uint16_t queue)
{
    std::unique_ptr<nftnl_rule, void (*)(const nftnl_rule*)> rule(nftnl_rule_alloc(), &nftnl_rule_free);
    nftnl_expr* target = nftnl_expr_alloc("target");
    void* data = std::calloc(1, alignedTargetSize); // nftnl frees it with free
    if (!rule || !target || !data)
        return { nullptr, &nftnl_rule_free };
    static_assert(sizeof(xt_NFQ_info_v3) <= alignedTargetSize);
    const xt_NFQ_info_v3 info { .queuenum = queue, .queues_total = 1, .flags = NFQ_FLAG_BYPASS };
    std::memcpy(data, &info, sizeof info);
    nftnl_expr_set_str(target, NFTNL_EXPR_TG_NAME, "NFQUEUE");
    nftnl_expr_set_u32(target, NFTNL_EXPR_TG_REV, 3);
    nftnl_expr_set(target, NFTNL_EXPR_TG_INFO, data, alignedTargetSize);
    nftnl_rule_set_u32(rule.get(), NFTNL_RULE_FAMILY, NFPROTO_INET);
    nftnl_rule_set_str(rule.get(), NFTNL_RULE_TABLE, table.c_str());
    nftnl_rule_set_str(rule.get(), NFTNL_RULE_CHAIN, chain.c_str());
    nftnl_rule_add_expr(rule.get(), target);
    return rule;
}

} // namespace

std::expected<void, std::string> addQueueTarget(const std::string& table, const std::string& chain, std::uint16_t queue)
{
    const auto rule = queueRule(table, chain, queue);
    if (!rule)
        return failure("no memory for a rule");
    const std::unique_ptr<mnl_socket, int (*)(mnl_socket*)> socket(mnl_socket_open(NETLINK_NETFILTER), &mnl_socket_close);
    if (!socket || mnl_socket_bind(socket.get(), 0, MNL_SOCKET_AUTOPID) < 0)
        return failure("the kernel's filter cannot be reached");

    std::array<char, bufferSize> buffer {};
    char* at = buffer.data();
    const auto begin = batchMessage(at, NFNL_MSG_BATCH_BEGIN, 1);
    at += begin->nlmsg_len;
    nlmsghdr* message = nftnl_rule_nlmsg_build_hdr(at, NFT_MSG_NEWRULE, NFPROTO_INET, NLM_F_CREATE | NLM_F_APPEND | NLM_F_ACK, 2);
    nftnl_rule_nlmsg_build_payload(message, rule.get());
    at += message->nlmsg_len;
    at += batchMessage(at, NFNL_MSG_BATCH_END, 3)->nlmsg_len;

    if (mnl_socket_sendto(socket.get(), buffer.data(), static_cast<std::size_t>(at - buffer.data())) < 0)
        return failure("the rule cannot be sent");
    const auto received = mnl_socket_recvfrom(socket.get(), buffer.data(), buffer.size());
    if (received < 0 || mnl_cb_run(buffer.data(), static_cast<std::size_t>(received), 0, mnl_socket_get_portid(socket.get()), nullptr, nullptr) < 0)
        return failure("the kernel does not take the queue rule");
    return {};
}

} // namespace orvanta::filter
