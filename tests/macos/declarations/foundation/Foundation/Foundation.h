#pragma once

// What the macOS layer uses of Foundation, declared from what is publicly documented, so that it can be compiled where
// there is no Mac. Nothing is here that it does not use.

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CGGeometry.h>
#include <objc/objc.h>

#define NS_ENUM(type, name)                                                                                                                          \
    enum name : type name;                                                                                                                           \
    enum name : type
#define NS_OPTIONS(type, name)                                                                                                                       \
    type name;                                                                                                                                       \
    enum : name

typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef unsigned short unichar;
typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;

struct NSRange {
    NSUInteger location;
    NSUInteger length;
};
typedef struct NSRange NSRange;

static inline NSRange NSMakeRange(NSUInteger location, NSUInteger length)
{
    return { location, length };
}

static inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height)
{
    return { { x, y }, { width, height } };
}

extern const NSRect NSZeroRect;

typedef struct _NSZone NSZone;

#pragma clang assume_nonnull begin

@class NSArray<ObjectType>;
@class NSData;
@class NSDate;
@class NSDictionary<KeyType, ObjectType>;
@class NSError;
@class NSNotification;
@class NSString;
@class NSURL;

typedef NSString* NSNotificationName;

@protocol NSObject
- (BOOL)isKindOfClass:(Class)aClass;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject>
+ (instancetype)alloc;
+ (Class)class;
- (instancetype)init __attribute__((objc_designated_initializer));
@end

@protocol NSCopying
@end

typedef struct {
    unsigned long state;
    id __unsafe_unretained _Nullable* _Nullable itemsPtr;
    unsigned long* _Nullable mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)len;
@end

@interface NSString : NSObject <NSCopying>
@property (readonly) NSUInteger length;
@property (readonly, copy) NSString* lowercaseString;
+ (instancetype)stringWithCharacters:(const unichar*)characters length:(NSUInteger)length;
- (void)getCharacters:(unichar*)buffer range:(NSRange)range;
- (BOOL)isEqualToString:(NSString*)aString;
@end

@interface NSConstantString : NSString
@end

@interface NSData : NSObject <NSCopying>
@property (readonly) NSUInteger length;
@property (readonly) const void* bytes;
+ (instancetype)dataWithBytes:(nullable const void*)bytes length:(NSUInteger)length;
@end

@interface NSNumber : NSObject <NSCopying>
@property (readonly) BOOL boolValue;
@property (readonly) unsigned int unsignedIntValue;
+ (NSNumber*)numberWithBool:(BOOL)value;
@end

@interface NSArray<ObjectType> : NSObject <NSCopying, NSFastEnumeration>
+ (instancetype)arrayWithObjects:(const ObjectType _Nonnull[_Nonnull])objects count:(NSUInteger)count;
@end

@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
+ (instancetype)arrayWithCapacity:(NSUInteger)numItems;
- (void)addObject:(ObjectType)anObject;
@end

@interface NSDictionary<KeyType, ObjectType> : NSObject <NSCopying, NSFastEnumeration>
+ (instancetype)dictionaryWithObjects:(const ObjectType _Nonnull[_Nonnull])objects
                              forKeys:(const KeyType<NSCopying> _Nonnull[_Nonnull])keys
                                count:(NSUInteger)count;
- (nullable ObjectType)objectForKey:(KeyType)aKey;
@end

@interface NSMutableDictionary<KeyType, ObjectType> : NSDictionary <KeyType, ObjectType>
+ (instancetype)dictionary;
- (void)setObject:(ObjectType)anObject forKey:(KeyType<NSCopying>)aKey;
@end

@interface NSURL : NSObject <NSCopying>
@property (nullable, readonly, copy) NSString* path;
@property (nullable, readonly, copy) NSString* pathExtension;
+ (nullable instancetype)URLWithString:(NSString*)URLString;
+ (NSURL*)fileURLWithPath:(NSString*)path;
- (nullable NSURL*)URLByAppendingPathComponent:(NSString*)pathComponent;
@end

@interface NSError : NSObject <NSCopying>
@property (readonly, copy) NSString* localizedDescription;
@end

@interface NSBundle : NSObject
@property (class, readonly) NSBundle* mainBundle;
@property (readonly, copy) NSURL* bundleURL;
@property (nullable, readonly, copy) NSString* bundleIdentifier;
@property (nullable, readonly, copy) NSDictionary<NSString*, id>* infoDictionary;
- (nullable instancetype)initWithURL:(NSURL*)url;
@end

@interface NSEnumerator<ObjectType> : NSObject <NSFastEnumeration>
@end

@interface NSDirectoryEnumerator<ObjectType> : NSEnumerator <ObjectType>
@end

typedef NS_OPTIONS(NSUInteger, NSDirectoryEnumerationOptions) {
    NSDirectoryEnumerationSkipsPackageDescendants = 1UL << 1,
    NSDirectoryEnumerationSkipsHiddenFiles = 1UL << 2,
};

@interface NSFileManager : NSObject
@property (class, readonly) NSFileManager* defaultManager;
@property (readonly, copy) NSURL* homeDirectoryForCurrentUser;
- (nullable NSDirectoryEnumerator<NSURL*>*)enumeratorAtURL:(NSURL*)url
                                includingPropertiesForKeys:(nullable NSArray<NSString*>*)keys
                                                   options:(NSDirectoryEnumerationOptions)mask
                                              errorHandler:(BOOL (^_Nullable)(NSURL* url, NSError* error))handler;
- (BOOL)fileExistsAtPath:(NSString*)path;
@end

@interface NSOperationQueue : NSObject
@property (class, readonly, strong) NSOperationQueue* mainQueue;
@end

@interface NSNotification : NSObject <NSCopying>
@property (nullable, readonly, copy) NSDictionary* userInfo;
@end

@interface NSNotificationCenter : NSObject
@property (class, readonly, strong) NSNotificationCenter* defaultCenter;
- (id<NSObject>)addObserverForName:(nullable NSNotificationName)name
                            object:(nullable id)obj
                             queue:(nullable NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification* notification))block;
- (void)removeObserver:(id)observer;
@end

@interface NSUserDefaults : NSObject
@property (class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (nullable id)objectForKey:(NSString*)defaultName;
- (void)setObject:(nullable id)value forKey:(NSString*)defaultName;
- (void)removeObjectForKey:(NSString*)defaultName;
@end

@interface NSFileHandle : NSObject
- (NSData*)readDataToEndOfFile;
@end

@interface NSPipe : NSObject
@property (readonly, retain) NSFileHandle* fileHandleForReading;
+ (NSPipe*)pipe;
@end

@interface NSTask : NSObject
@property (nullable, copy) NSURL* executableURL;
@property (nullable, copy) NSArray<NSString*>* arguments;
@property (nullable, retain) id standardOutput;
@property (readonly) int terminationStatus;
- (BOOL)launchAndReturnError:(NSError* _Nullable* _Nullable)error;
- (void)waitUntilExit;
@end

extern NSNotificationName const NSUbiquitousKeyValueStoreDidChangeExternallyNotification;

@interface NSUbiquitousKeyValueStore : NSObject
@property (class, readonly, strong) NSUbiquitousKeyValueStore* defaultStore;
- (nullable id)objectForKey:(NSString*)aKey;
- (nullable NSArray*)arrayForKey:(NSString*)aKey;
- (nullable NSData*)dataForKey:(NSString*)aKey;
- (void)setArray:(nullable NSArray*)anArray forKey:(NSString*)aKey;
- (void)setData:(nullable NSData*)aData forKey:(NSString*)aKey;
- (void)removeObjectForKey:(NSString*)aKey;
- (BOOL)synchronize;
@end

@interface NSAppleEventDescriptor : NSObject
@property (nullable, readonly, copy) NSString* stringValue;
@end

@interface NSAppleScript : NSObject
- (nullable instancetype)initWithSource:(NSString*)source;
- (nullable NSAppleEventDescriptor*)executeAndReturnError:(NSDictionary* _Nullable* _Nullable)errorInfo;
@end

#pragma clang assume_nonnull end
