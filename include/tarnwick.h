// The whole Tarnwick library in one include.
#ifndef TARNWICK_H
#define TARNWICK_H

#include "SString.h"
#include "SStringList.h"
#include "SSocket.h"
#include "SSocketPlus.h"
#include "Snetwork.h"

#endif
