#include "harness/hook_script.h"

namespace orvanta {

using namespace Qt::StringLiterals;

QByteArray hookScript()
{
    return "#!/bin/sh\n"
           "# Installed and repaired by Orvanta Focus. Deliberately fail open.\n"
           "/usr/bin/curl --silent --max-time 0.25 \\\n"
           "  --request POST http://127.0.0.1:47653/events \\\n"
           "  --header 'Content-Type: application/json' \\\n"
           "  --header \"X-Orvanta-Harness: $1\" \\\n"
           "  --data-binary @- >/dev/null 2>&1 || true\n"
           "exit 0"_ba;
}

QString hookCommand(const QString& scriptPath, AIHarness harness)
{
    QString inner = scriptPath;
    inner.replace(u'\'', "'\\''"_L1);
    return u"/bin/sh '"_s + inner + u"' "_s + harnessName(harness);
}

} // namespace orvanta
