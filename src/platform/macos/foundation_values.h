#pragma once

#include "platform/platform_error.h"

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <QVariant>

#include <optional>

#import <Foundation/Foundation.h>

namespace orvanta {

// Values of Foundation's as ours, and the other way round. Texts keep every code unit, also unpaired surrogates and zeros.

[[nodiscard]] NSString* toNSString(const QString& text);
[[nodiscard]] NSString* toOptionalNSString(const std::optional<QString>& text); ///< nil for none
[[nodiscard]] QString toQString(NSString* text);                                ///< empty for nil
[[nodiscard]] std::optional<QString> toText(NSString* text);
[[nodiscard]] std::optional<QString> toText(id value); ///< absent for anything but a text

[[nodiscard]] NSData* toNSData(const QByteArray& bytes);
[[nodiscard]] QByteArray toQByteArray(NSData* data);

[[nodiscard]] NSURL* toNSURL(const QUrl& url); ///< nil for what is no address
[[nodiscard]] QUrl toFileUrl(NSURL* url);

[[nodiscard]] NSArray* toNSArray(const QStringList& texts);
[[nodiscard]] std::optional<QStringList> toTexts(NSArray* array); ///< absent if an element is no text

/// Of property lists just what our configurations hold: texts, lists of texts, truth values.
[[nodiscard]] NSDictionary* toNSDictionary(const QVariantMap& entries);
[[nodiscard]] QVariantMap toQVariantMap(NSDictionary* dictionary);

[[nodiscard]] PlatformError toPlatformError(NSError* error);
[[nodiscard]] Result<void> toResult(NSError* error); ///< nil is success

} // namespace orvanta
