#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace orvanta {

/// Whether a typed domain may be saved: when anything but white space and line breaks is in it. What becomes of it is
/// decided where it is saved.
[[nodiscard]] bool isWorthSaving(const QString& domain);

/// What stands in the domain editor: the text as typed, and whether it may be saved. Each editor has its own, which begins
/// empty.
class DomainEntry : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString domain READ domain WRITE setDomain NOTIFY domainChanged)
    Q_PROPERTY(bool canSave READ canSave NOTIFY domainChanged)

public:
    using QObject::QObject;

    [[nodiscard]] const QString& domain() const { return m_domain; }
    void setDomain(const QString& domain);
    [[nodiscard]] bool canSave() const { return isWorthSaving(m_domain); }

Q_SIGNALS:
    void domainChanged();

private:
    QString m_domain;
};

} // namespace orvanta
