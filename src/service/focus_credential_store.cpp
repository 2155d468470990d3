#include "service/focus_credential_store.h"

#include <QStringDecoder>

namespace orvanta {

using namespace Qt::StringLiterals;

std::optional<QString> FocusCredentialStore::readAPIKey() const
{
    const std::optional<QByteArray> data = m_secrets.read(u"com.orvanta.focus"_s, u"orvanta-api-key"_s);
    if (!data)
        return std::nullopt;

    // A stateless decoder counts a character cut off at the end as an error, and the flag keeps a byte order mark.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    QString key = decoder(*data);
    if (decoder.hasError())
        return std::nullopt;
    return key;
}

} // namespace orvanta
