#ifndef VPTZ_EXPORT_H
#define VPTZ_EXPORT_H

// Marks what the shared object offers; everything else in it is hidden.
#define VPTZ_API __attribute__((visibility("default")))

// Marks a member of such a class that stays inside.
#define VPTZ_HIDDEN __attribute__((visibility("hidden")))

#endif
