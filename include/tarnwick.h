// The whole Tarnwick library in one include.
#ifndef TARNWICK_H
#define TARNWICK_H

#include "SString.h"
#include "SStringList.h"
#include "SNamedLists.h"
#include "SRegex.h"
#include "SMessage.h"
#include "halyard.h"
#include "SSocket.h"
#include "SSocketPlus.h"
#include "Snetwork.h"
#include "Sfiledir.h"
#include "Sdatetime.h"
#include "Smime.h"
#include "Smisc.h"
#include "Sprocess.h"
#include "Ssecurity.h"

#endif
