#include "macos/gnustep/fakes/fake_cloud.h"

#include "macos/gnustep/fakes/fake_system.h"
#include "macos/gnustep/fakes/object_state.h"
#include "platform/macos/foundation_values.h"

#import <Foundation/Foundation.h>

using namespace orvanta;
using namespace orvanta::testing::mac;

@interface FakeCloud : NSUbiquitousKeyValueStore
@end

@interface FakeDefaults : NSUserDefaults
@end

namespace {

FakeCloud* cloud = nil;
NSMutableDictionary* values = nil;   ///< what is here
NSMutableDictionary* underWay = nil; ///< what is still elsewhere
NSMutableDictionary* defaults = nil;

void reset()
{
    keep(cloud, [[[FakeCloud alloc] init] autorelease]);
    keep(values, [NSMutableDictionary dictionary]);
    keep(underWay, [NSMutableDictionary dictionary]);
    keep(defaults, [NSMutableDictionary dictionary]);
}

const ResetAtBegin resetAtBegin(reset);

void takeIn()
{
    if ([underWay count] == 0)
        return;
    [values addEntriesFromDictionary:underWay];
    [underWay removeAllObjects];
    onAnotherThread(
        [] { [[NSNotificationCenter defaultCenter] postNotificationName:NSUbiquitousKeyValueStoreDidChangeExternallyNotification object:cloud]; });
}

} // namespace

@implementation FakeCloud

- (id)objectForKey:(NSString*)key
{
    return [values objectForKey:key];
}

- (NSArray*)arrayForKey:(NSString*)key
{
    id value = [values objectForKey:key];
    return [value isKindOfClass:[NSArray class]] ? value : nil;
}

- (NSData*)dataForKey:(NSString*)key
{
    id value = [values objectForKey:key];
    return [value isKindOfClass:[NSData class]] ? value : nil;
}

- (void)setArray:(NSArray*)array forKey:(NSString*)key
{
    record(QStringLiteral("cloud setArray ") + toQString(key));
    [values setObject:array forKey:key];
}

- (void)setData:(NSData*)data forKey:(NSString*)key
{
    record(QStringLiteral("cloud setData ") + toQString(key));
    [values setObject:data forKey:key];
}

- (void)removeObjectForKey:(NSString*)key
{
    record(QStringLiteral("cloud removeObject ") + toQString(key));
    [values removeObjectForKey:key];
}

- (void)synchronize
{
    record(QStringLiteral("cloud synchronize"));
    takeIn();
}

@end

@implementation FakeDefaults

- (id)objectForKey:(NSString*)key
{
    return [defaults objectForKey:key];
}

- (void)setObject:(id)value forKey:(NSString*)key
{
    record(QStringLiteral("defaults setObject ") + toQString(key));
    [defaults setObject:value forKey:key];
}

- (void)removeObjectForKey:(NSString*)key
{
    record(QStringLiteral("defaults removeObject ") + toQString(key));
    [defaults removeObjectForKey:key];
}

@end

@implementation NSUserDefaults (Fake)

+ (NSUserDefaults*)standardUserDefaults
{
    static FakeDefaults* standard = [FakeDefaults alloc]; // not made as GNUstep's are: those read files
    return standard;
}

@end

@implementation NSUbiquitousKeyValueStore (Fake)

+ (NSUbiquitousKeyValueStore*)defaultStore
{
    return cloud;
}

@end

namespace orvanta::testing::mac {

void changeInCloud(const QString& key, const StoredValue& value)
{
    @autoreleasepool {
        if (const auto* texts = std::get_if<QStringList>(&value))
            [underWay setObject:toNSArray(*texts) forKey:toNSString(key)];
        else if (const auto* bytes = std::get_if<QByteArray>(&value))
            [underWay setObject:toNSData(*bytes) forKey:toNSString(key)];
    }
}

void arriveFromCloud()
{
    @autoreleasepool {
        takeIn();
    }
}

void leaveNumberInCloud(const QString& key)
{
    @autoreleasepool {
        [values setObject:[NSNumber numberWithInt:5] forKey:toNSString(key)];
    }
}

void leaveNumberInDefaults(const QString& key)
{
    @autoreleasepool {
        [defaults setObject:[NSNumber numberWithInt:5] forKey:toNSString(key)];
    }
}

} // namespace orvanta::testing::mac
