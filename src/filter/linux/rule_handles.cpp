#include "filter/linux/rule_handles.h"

#include <libmnl/libmnl.h>
#include <libnftnl/rule.h>
#include <linux/netfilter.h>
#include <linux/netfilter/nf_tables.h>

#include <memory>

namespace orvanta::filter {

namespace {

constexpr std::uint32_t sequence = 1;
constexpr std::size_t dumpSize = 32768; // what the kernel fills at most with one answer

int take(const nlmsghdr* message, void* handles)
{
    const std::unique_ptr<nftnl_rule, void (*)(const nftnl_rule*)> rule(nftnl_rule_alloc(), &nftnl_rule_free);
    if (!rule || nftnl_rule_nlmsg_parse(message, rule.get()) < 0)
        return MNL_CB_ERROR;
    static_cast<std::vector<std::uint64_t>*>(handles)->push_back(nftnl_rule_get_u64(rule.get(), NFTNL_RULE_HANDLE));
    return MNL_CB_OK;
}

} // namespace

std::vector<std::uint64_t> ruleHandles(const std::string& table)
{
    const std::unique_ptr<mnl_socket, int (*)(mnl_socket*)> socket(mnl_socket_open(NETLINK_NETFILTER), &mnl_socket_close);
    const std::unique_ptr<nftnl_rule, void (*)(const nftnl_rule*)> which(nftnl_rule_alloc(), &nftnl_rule_free);
    if (!socket || !which || mnl_socket_bind(socket.get(), 0, MNL_SOCKET_AUTOPID) < 0)
        return {};
    nftnl_rule_set_str(which.get(), NFTNL_RULE_TABLE, table.c_str());
    std::vector<char> buffer(dumpSize);
    nlmsghdr* question = nftnl_rule_nlmsg_build_hdr(buffer.data(), NFT_MSG_GETRULE, NFPROTO_INET, NLM_F_DUMP, sequence);
    nftnl_rule_nlmsg_build_payload(question, which.get());
    if (mnl_socket_sendto(socket.get(), question, question->nlmsg_len) < 0)
        return {};
    std::vector<std::uint64_t> handles;
    for (int status = MNL_CB_OK; status == MNL_CB_OK;) {
        const auto received = mnl_socket_recvfrom(socket.get(), buffer.data(), buffer.size());
        if (received <= 0)
            return {};
        status = mnl_cb_run(buffer.data(), static_cast<std::size_t>(received), sequence, mnl_socket_get_portid(socket.get()), &take, &handles);
        if (status == MNL_CB_ERROR)
            return {};
    }
    return handles;
}

} // namespace orvanta::filter
