#pragma once

// GNUstep asks for the blocks of another runtime than Debian's.

#include <Block.h>
