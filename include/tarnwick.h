// The whole Tarnwick library in one include.
#ifndef TARNWICK_H
#define TARNWICK_H

#include "SString.h"
#include "SStringList.h"
#include "SNamedLists.h"
#include "Sdatetime.h"
#include "Sfiledir.h"
#include "Smime.h"
#include "Smisc.h"
#include "Sprocess.h"
#include "Ssecurity.h"
#include "SSocket.h"
#include "SSocketPlus.h"
#include "Snetwork.h"

#endif
