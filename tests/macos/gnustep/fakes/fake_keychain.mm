#include "macos/gnustep/fakes/fake_keychain.h"

#include "macos/gnustep/fakes/fake_system.h"
#include "platform/macos/foundation_values.h"

#include <map>
#include <utility>

#import <Foundation/Foundation.h>
#import <Security/Security.h>

using namespace orvanta;
using namespace orvanta::testing::mac;

#define CONSTANT(name) const CFStringRef name = (CFStringRef) @ #name
CONSTANT(kSecClass);
CONSTANT(kSecClassGenericPassword);
CONSTANT(kSecAttrService);
CONSTANT(kSecAttrAccount);
CONSTANT(kSecReturnData);
CONSTANT(kSecMatchLimit);
CONSTANT(kSecMatchLimitOne);

namespace {

std::map<std::pair<QString, QString>, QByteArray> items;
OSStatus refusal = errSecSuccess;
bool isText = false;

const ResetAtBegin resetAtBegin([] {
    items.clear();
    refusal = errSecSuccess;
    isText = false;
});

} // namespace

OSStatus SecItemCopyMatching(CFDictionaryRef query, CFTypeRef* result)
{
    NSDictionary* entries = (NSDictionary*)query;
    QStringList asked;
    for (NSString* key in [[entries allKeys] sortedArrayUsingSelector:@selector(compare:)])
        asked << toQString(key) + u'=' + toQString([[entries objectForKey:key] description]);
    record(QStringLiteral("SecItemCopyMatching ") + asked.join(u' '));
    if (refusal != errSecSuccess)
        return refusal;
    if (isText) {
        *result = [@"a text" retain];
        return errSecSuccess;
    }
    // Without these a Mac's keychain answers with something else, or not at all.
    const auto isSet = [&](CFStringRef key, CFStringRef value) { return [[entries objectForKey:(id)key] isEqual:(id)value]; };
    if (!isSet(kSecClass, kSecClassGenericPassword) || ![[entries objectForKey:(id)kSecReturnData] boolValue])
        return errSecItemNotFound;
    const auto item = items.find({ toText([entries objectForKey:(id)kSecAttrService]).value_or(QString()),
        toText([entries objectForKey:(id)kSecAttrAccount]).value_or(QString()) });
    if (item == items.end())
        return errSecItemNotFound;
    *result = [toNSData(item->second) retain];
    return errSecSuccess;
}

namespace orvanta::testing::mac {

void putIntoKeychain(const QString& service, const QString& account, const QByteArray& secret)
{
    items[{ service, account }] = secret;
}

void refuseKeychain(int status)
{
    refusal = status;
}

void answerKeychainWithText()
{
    isText = true;
}

} // namespace orvanta::testing::mac
