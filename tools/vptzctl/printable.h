#ifndef VPTZCTL_PRINTABLE_H
#define VPTZCTL_PRINTABLE_H

#include <string>

namespace vptzctl {

// The text with escapes such as \x1b in the place of what could play tricks on a
// terminal or its reader: control characters, marks that turn the direction of
// writing, and bytes that are no UTF-8.
std::string Printable(const std::string& text);

}  // namespace vptzctl

#endif
