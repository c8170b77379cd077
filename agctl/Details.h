#pragma once

#include <iosfwd>

#include "agctl/Json.h"
#include "agctl/Screen.h"

namespace agctl {

/// A document for people: a line for each value, what belongs to an object indented below its
/// name, times written out. On a terminal no line is wider than the screen.
void printDetails(std::ostream& out, const Screen& screen, const Json& document);

}  // namespace agctl
