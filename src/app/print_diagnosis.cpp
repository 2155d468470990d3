#include "app/print_diagnosis.h"

#include <cstdlib>

namespace orvanta {

using namespace Qt::StringLiterals;

int printDiagnosis(const DesktopDiagnosis& diagnosis, std::FILE* output)
{
    QStringList lines = diagnosis.sources;
    for (const QString& missing : diagnosis.missing)
        lines << u"Missing: %1"_s.arg(missing);
    if (diagnosis.missing.isEmpty())
        lines << u"Nothing is missing."_s;
    const QByteArray text = lines.join(u'\n').toUtf8() + '\n';
    const bool isWritten = std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), output) == static_cast<std::size_t>(text.size())
        && std::fflush(output) == 0;
    return isWritten && diagnosis.missing.isEmpty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace orvanta
