#include "filter/linux/filter_rules.h"

#include "filter/linux/queue_target.h"
#include "filter/linux/rule_handles.h"

#include <nftables/libnftables.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <string_view>

namespace orvanta::filter {

namespace {

constexpr int smallestTcpHeader = 5; // in words of four bytes
constexpr int largestTcpHeader = 15;

/// Runs commands of nft as one transaction; what they print is the answer.
std::expected<std::string, std::string> ask(const std::string& commands)
{
    const std::unique_ptr<nft_ctx, void (*)(nft_ctx*)> context(nft_ctx_new(NFT_CTX_DEFAULT), &nft_ctx_free);
    if (!context)
        return std::unexpected("nftables cannot be reached");
    nft_ctx_buffer_output(context.get());
    nft_ctx_buffer_error(context.get());
    if (nft_run_cmd_from_buffer(context.get(), commands.c_str()) != 0)
        return std::unexpected(std::string("nftables: ") + nft_ctx_get_error_buffer(context.get()));
    return nft_ctx_get_output_buffer(context.get());
}

std::expected<void, std::string> run(const std::string& commands)
{
    if (auto done = ask(commands); !done)
        return std::unexpected(std::move(done).error());
    return {};
}

/// To add before deleting makes the deletion succeed whether the table is there or not.
const std::string removal = "add table inet orvanta_focus\ndelete table inet orvanta_focus\n";

} // namespace

std::string FilterRules::text(std::uint8_t generation) const
{
    const std::string mask = std::to_string(m_bits.mask());
    const std::string rest = std::to_string(~m_bits.mask());
    const std::string unreadable = std::to_string(m_bits.unreadable());
    std::ostringstream rules;
    rules << "table inet orvanta_focus {\n"
             " counter asked {\n }\n"
             " chain decide {\n  counter name asked\n }\n"
          << " chain known {\n  " << knownRule(generation) << "\n }\n"
          << " chain remember {\n  " << rememberRule(generation)
          << "\n }\n"
          // What was refused once stays refused.
          << " chain refused_before {\n  ct mark & " << mask << " == " << mask << " meta mark set meta mark | " << mask
          << " accept\n }\n"
             // A new connection over ports that were used before must not inherit their verdict; and a reset, our own
             // above all, is never refused.
             " chain inspect_tcp {\n"
             "  tcp flags & (syn | ack) == syn ct mark set ct mark & "
          << rest
          << "\n"
             "  tcp flags & rst == rst accept\n"
             "  jump known\n"
             "  jump refused_before\n";
    // What carries no payload decides nothing. (Together in one set, these make nft 1.0.6 abort when it lists them.)
    for (int words = smallestTcpHeader; words <= largestTcpHeader; ++words) {
        rules << "  ip hdrlength 5 tcp doff " << words << " ip length " << 20 + 4 * words << " accept\n"
              << "  ip6 length " << 4 * words << " tcp doff " << words << " accept\n";
    }
    rules << "  jump decide\n }\n"
             // Long headers of an Initial packet, of version 1 and of version 2; and whatever an older list allowed.
             " chain inspect_quic {\n"
             "  @th,64,8 & 0xf0 == 0xc0 @th,72,32 0x00000001 goto decide\n"
             "  @th,64,8 & 0xf0 == 0xd0 @th,72,32 0x6b3343cf goto decide\n"
             "  jump known\n"
             "  jump refused_before\n"
          // A long header of a version that we cannot read: the connection is being set up, and is not older than we are.
          << "  @th,64,8 & 0xc0 == 0xc0 @th,72,32 != { 0x00000001, 0x6b3343cf } ct mark & " << mask << " == 0 ct mark set ct mark | " << unreadable
          << "\n"
          << "  ct mark & " << mask << " == " << unreadable
          << " accept\n"
          // A short header that nobody has allowed belongs to a connection from before; or to one whose mark was lost: of
          // two packets that begin a connection at once, the kernel keeps the mark of one.
          << "  @th,64,8 & 0xc0 == 0x40 jump decide\n }\n"
             " chain inspect {\n"
             "  tcp dport { 80, 443 } goto inspect_tcp\n"
             "  udp dport 443 goto inspect_quic\n }\n"
             // What a name service answers; questions are nobody's business.
             " chain answers {\n"
             "  udp sport 53 udp dport != 443 @th,80,8 & 0x80 == 0x80 jump decide\n }\n"
             " chain refuse {\n"
             "  ct mark set ct mark | "
          << mask
          << "\n"
             "  meta l4proto tcp reject with tcp reset\n"
             "  reject with icmpx type port-unreachable\n }\n"
             " chain conclude {\n"
             "  meta mark & "
          << mask << " == " << mask
          << " goto refuse\n"
             "  jump remember\n"
             "  meta mark set meta mark & "
          << rest << "\n }\n";
    // A queue's "accept" goes on with the next chain, which is where the verdict is carried out.
    for (const std::string hook : { "output", "forward" }) {
        rules << " chain " << hook << "_inspection {\n  type filter hook " << hook
              << " priority -10; policy accept;\n  oifname != \"lo\" jump inspect\n }\n"
              << " chain " << hook << "_conclusion {\n  type filter hook " << hook << " priority -9; policy accept;\n  meta mark & " << mask
              << " != 0 jump conclude\n }\n";
    }
    // Answers are exchanged on their way in, and on their way to those whose packets go through this machine.
    for (const std::string hook : { "input", "forward" }) {
        rules << " chain " << hook << "_answers {\n  type filter hook " << hook
              << " priority -10; policy accept;\n  iifname != \"lo\" jump answers\n }\n";
    }
    rules << "}\n";
    return rules.str();
}

std::string FilterRules::knownRule(std::uint8_t generation) const
{
    return "ct mark & " + std::to_string(m_bits.mask()) + " == " + std::to_string(m_bits.allowedBy(generation)) + " accept";
}

std::string FilterRules::rememberRule(std::uint8_t generation) const
{
    return "ct mark set ct mark & " + std::to_string(~m_bits.mask()) + " | " + std::to_string(m_bits.allowedBy(generation));
}

std::expected<void, std::string> FilterRules::setGeneration(std::uint8_t generation) const
{
    return run("flush chain inet orvanta_focus known\n"
               "flush chain inet orvanta_focus remember\n"
               "add rule inet orvanta_focus known "
        + knownRule(generation)
        + "\n"
          "add rule inet orvanta_focus remember "
        + rememberRule(generation) + "\n");
}

std::expected<void, std::string> FilterRules::load(std::uint16_t queue, std::uint8_t generation) const
{
    const std::string table = removal + text(generation);
    const std::string number = std::to_string(queue);
    if (run(table + "add rule inet orvanta_focus decide queue num " + number + " bypass\n"))
        return {};
    // Some kernels have no queue expression of nftables' own and take the older target.
    if (const auto loaded = run(table); !loaded)
        return loaded;
    if (const auto added = addQueueTarget("orvanta_focus", "decide", queue); !added) {
        (void)remove();
        return added;
    }
    return {};
}

std::vector<std::uint64_t> FilterRules::identity()
{
    return ruleHandles("orvanta_focus");
}

std::uint64_t FilterRules::asked()
{
    const std::string counter = ask("list counter inet orvanta_focus asked\n").value_or("");
    constexpr std::string_view before = "packets ";
    const auto at = counter.find(before);
    return at == std::string::npos ? 0 : std::strtoull(counter.c_str() + at + before.size(), nullptr, 10);
}

std::expected<void, std::string> FilterRules::remove()
{
    return run(removal);
}

} // namespace orvanta::filter
