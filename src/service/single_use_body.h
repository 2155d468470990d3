#pragma once

#include <QByteArray>
#include <QIODevice>

namespace orvanta {

/// A request body that can be read through once. QNetworkAccessManager sends a request again by itself when a kept
/// connection closes under it, a POST like any other; since it cannot rewind this device, it fails instead, and what
/// a POST asks for never happens twice. Owned by the transfer that sends it.
class SingleUseBody : public QIODevice {
    Q_OBJECT

public:
    SingleUseBody(QByteArray bytes, QObject* parent);

    [[nodiscard]] qint64 size() const override { return m_bytes.size(); }
    bool seek(qint64 position) override;
    bool reset() override { return false; }

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray m_bytes;
};

} // namespace orvanta
