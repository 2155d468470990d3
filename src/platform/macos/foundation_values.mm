#include "platform/macos/foundation_values.h"

#include <CoreFoundation/CoreFoundation.h>

namespace orvanta {

NSString* toNSString(const QString& text)
{
    return [NSString stringWithCharacters:reinterpret_cast<const unichar*>(text.utf16()) length:static_cast<NSUInteger>(text.size())];
}

NSString* toOptionalNSString(const std::optional<QString>& text)
{
    return text ? toNSString(*text) : nil;
}

QString toQString(NSString* text)
{
    QString result(static_cast<qsizetype>(text.length), Qt::Uninitialized);
    if (!result.isEmpty())
        [text getCharacters:reinterpret_cast<unichar*>(result.data()) range:NSMakeRange(0, text.length)];
    return result;
}

std::optional<QString> toText(NSString* text)
{
    return text ? std::optional(toQString(text)) : std::nullopt;
}

std::optional<QString> toText(id value)
{
    return [value isKindOfClass:NSString.class] ? std::optional(toQString(static_cast<NSString*>(value))) : std::nullopt;
}

NSData* toNSData(const QByteArray& bytes)
{
    return [NSData dataWithBytes:bytes.constData() length:static_cast<NSUInteger>(bytes.size())];
}

QByteArray toQByteArray(NSData* data)
{
    return { static_cast<const char*>(data.bytes), static_cast<qsizetype>(data.length) };
}

NSURL* toNSURL(const QUrl& url)
{
    return [NSURL URLWithString:toNSString(QString::fromLatin1(url.toEncoded()))];
}

QUrl toFileUrl(NSURL* url)
{
    return QUrl::fromLocalFile(toQString(url.path));
}

NSArray* toNSArray(const QStringList& texts)
{
    NSMutableArray* array = [NSMutableArray arrayWithCapacity:static_cast<NSUInteger>(texts.size())];
    for (const QString& text : texts)
        [array addObject:toNSString(text)];
    return array;
}

std::optional<QStringList> toTexts(NSArray* array)
{
    QStringList texts;
    for (id element in array) {
        const auto text = toText(element);
        if (!text)
            return std::nullopt;
        texts << *text;
    }
    return texts;
}

namespace {

id toPropertyList(const QVariant& value)
{
    if (value.typeId() == QMetaType::QStringList)
        return toNSArray(value.toStringList());
    if (value.typeId() == QMetaType::Bool)
        return [NSNumber numberWithBool:value.toBool()];
    return toNSString(value.toString());
}

QVariant toVariant(id value)
{
    if (const auto text = toText(value))
        return *text;
    if ([value isKindOfClass:NSArray.class])
        return toTexts(static_cast<NSArray*>(value)).value_or(QStringList());
    if ([value isKindOfClass:NSNumber.class])
        return static_cast<bool>([static_cast<NSNumber*>(value) boolValue]);
    return {};
}

} // namespace

NSDictionary* toNSDictionary(const QVariantMap& entries)
{
    NSMutableDictionary* dictionary = [NSMutableDictionary dictionary];
    for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry)
        [dictionary setObject:toPropertyList(entry.value()) forKey:toNSString(entry.key())];
    return dictionary;
}

QVariantMap toQVariantMap(NSDictionary* dictionary)
{
    QVariantMap entries;
    for (id key in dictionary) {
        if (const auto text = toText(key))
            entries.insert(*text, toVariant([dictionary objectForKey:key]));
    }
    return entries;
}

PlatformError toPlatformError(NSError* error)
{
    return { toQString(error.localizedDescription) };
}

Result<void> toResult(NSError* error)
{
    if (error)
        return std::unexpected(toPlatformError(error));
    return {};
}

} // namespace orvanta
