#include "localservice/page_frame.h"

#include <QCryptographicHash>
#include <QFile>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

QByteArray pageAsset(const QString& name)
{
    QFile file(u":/localservice/"_s + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString escaped(const QString& text)
{
    return text.toHtmlEscaped();
}

Response framedPage(int status, const QString& title, const QByteArray& style, const QString& main)
{
    const QByteArray digest = QCryptographicHash::hash(style, QCryptographicHash::Sha256).toBase64();
    const QByteArray html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<link rel=\"icon\" href=\"data:,\">\n<title>"
        + escaped(title).toUtf8() + "</title>\n<style>" + style + "</style>\n</head>\n<body>\n<main>\n" + main.toUtf8()
        + "</main>\n</body>\n</html>\n";
    const QByteArray policy
        = "default-src 'none'; style-src 'sha256-" + digest + "'; img-src data:; form-action 'self'; base-uri 'none'; frame-ancestors 'none'";
    return { status, "text/html; charset=utf-8", html,
        { { "Content-Security-Policy", policy }, { "X-Frame-Options", "DENY" }, { "Cross-Origin-Opener-Policy", "same-origin" },
            { "Cross-Origin-Resource-Policy", "same-origin" },
            // Not "no-referrer": with that a browser sends "null" as the origin of our own forms.
            { "Referrer-Policy", "same-origin" } } };
}

} // namespace orvanta::localservice
