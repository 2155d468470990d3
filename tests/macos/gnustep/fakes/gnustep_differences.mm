#include <vector>

#import <Foundation/Foundation.h>

// Where GNUstep's Foundation differs from a Mac's.

@implementation NSString (OfMac)

/// GNUstep takes a byte-order mark at the beginning away; on a Mac it is a character like any other here.
+ (instancetype)stringWithCharacters:(const unichar*)characters length:(NSUInteger)length
{
    std::vector<unichar> guarded { '.' };
    guarded.insert(guarded.end(), characters, characters + length);
    NSString* text = [[[NSString alloc] initWithCharacters:guarded.data() length:guarded.size()] autorelease];
    return [text substringFromIndex:1];
}

@end
