#pragma once

#import <Foundation/NSGeometry.h>

typedef NSPoint CGPoint;
typedef NSSize CGSize;
typedef NSRect CGRect;
