// The whole Tarnwick library in one include.
#ifndef TARNWICK_H
#define TARNWICK_H

#include "SString.h"
#include "SStringList.h"
#include "SNamedLists.h"
#include "SRegex.h"
#include "Sdatetime.h"
#include "Sfiledir.h"
#include "Smime.h"
#include "Smisc.h"
#include "Sprocess.h"
#include "Ssecurity.h"
#include "SMessage.h"
#include "halyard.h"

#endif
