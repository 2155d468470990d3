#pragma once

// Read before all else: what the macOS layer uses of Foundation and GNUstep's does not have. The fakes implement it.

#import <Foundation/Foundation.h>

@interface NSAppleEventDescriptor (OfMac)
- (NSString*)stringValue;
@end

@interface NSAppleScript (OfMac)
- (id)initWithSource:(NSString*)source;
- (NSAppleEventDescriptor*)executeAndReturnError:(NSDictionary**)errorInfo;
@end

@interface NSFileManager (OfMac)
- (NSURL*)homeDirectoryForCurrentUser;
@end

@interface NSTask (OfMac)
- (void)setExecutableURL:(NSURL*)url;
- (NSURL*)executableURL;
- (BOOL)launchAndReturnError:(NSError**)error;
@end
