#include "service/single_use_body.h"

#include <algorithm>

namespace orvanta {

SingleUseBody::SingleUseBody(QByteArray bytes, QObject* parent) : QIODevice(parent), m_bytes(std::move(bytes))
{
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

bool SingleUseBody::seek(qint64 position)
{
    return position >= pos() && QIODevice::seek(position);
}

qint64 SingleUseBody::readData(char* data, qint64 maxSize)
{
    const qint64 count = std::clamp<qint64>(m_bytes.size() - pos(), 0, maxSize);
    std::copy_n(m_bytes.constData() + pos(), count, data);
    return count;
}

} // namespace orvanta
