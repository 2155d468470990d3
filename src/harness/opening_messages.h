#pragma once

#include "harness/lifecycle/harness_lifecycle_event.h"
#include "platform/file_system.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

inline constexpr qsizetype transcriptLimit = 1'048'576; ///< bytes of a transcript that are read
inline constexpr std::size_t openingMessagesKept = 8;   ///< messages that are taken from them
inline constexpr int openingMessageCharacters = 4000;   ///< characters that are kept of each

/// Finds a session's first messages in a transcript that comes in pieces: one JSON object a line, in the form of either
/// agent. Lines that are none, or hold no message of the user or the assistant, are passed over; so are the blocks of
/// instructions that an agent writes before the user's first words. Does no I/O; any bytes may be given.
class OpeningMessageScan {
public:
    /// Takes the next piece. True while more is wanted.
    [[nodiscard]] bool feed(std::string_view piece);

    /// What was found, in the order of the file, once nothing more comes.
    [[nodiscard]] std::vector<HarnessOpeningMessage> finish();

private:
    void takeLine(std::string_view line);
    [[nodiscard]] bool isFull() const { return m_messages.size() == openingMessagesKept; }

    std::string m_beginning; ///< of a line whose end has not come
    std::vector<HarnessOpeningMessage> m_messages;
};

/// The opening messages of the transcript at `path`: none if it cannot be read or is no regular file. Reads no further
/// than it must.
[[nodiscard]] std::vector<HarnessOpeningMessage> readOpeningMessages(FileSystem& files, const QString& path);

} // namespace orvanta
