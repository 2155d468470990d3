#pragma once

#include <QByteArray>
#include <QString>

namespace orvanta::testing::mac {

// The login keychain. What is asked of it is recorded as "SecItemCopyMatching" with the query's entries, sorted.

void putIntoKeychain(const QString& service, const QString& account, const QByteArray& secret);

/// From now on every look-up ends with `status`, and finds nothing.
void refuseKeychain(int status);

/// From now on a look-up ends well, with something that is no data.
void answerKeychainWithText();

} // namespace orvanta::testing::mac
