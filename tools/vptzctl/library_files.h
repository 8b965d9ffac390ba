// Where the library keeps its files, which it does not tell itself.
#ifndef VPTZCTL_LIBRARY_FILES_H
#define VPTZCTL_LIBRARY_FILES_H

namespace vptzctl {

const char* ConfigFile();
const char* DatabaseFile();

}  // namespace vptzctl

#endif
