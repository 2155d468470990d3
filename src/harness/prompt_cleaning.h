#pragma once

#include <QString>

namespace orvanta {

/// What the user wrote, without what an agent puts around it: blocks of an in-app browser's context, the heading "## My
/// request for Codex:" at the beginning of a line with the white space around it, and white space at both ends.
///
/// The same as removing every match of `<in-app-browser-context\b[^>]*>[\s\S]*?</in-app-browser-context>`, then every match
/// of `(?im)^\s*## My request for Codex:\s*`, and trimming; but in time proportional to the text, whatever it holds.
[[nodiscard]] QString cleanedPrompt(const QString& text);

/// The first `limit` characters of `text` as a reader counts them (grapheme clusters), so that none is torn.
[[nodiscard]] QString firstCharacters(const QString& text, int limit);

} // namespace orvanta
