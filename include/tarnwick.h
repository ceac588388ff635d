// The whole Tarnwick library in one include.
#ifndef TARNWICK_H
#define TARNWICK_H

#include "SString.h"
#include "SStringList.h"
#include "SNamedLists.h"
#include "SMessage.h"
#include "halyard.h"

#endif
