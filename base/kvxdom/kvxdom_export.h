// Marks what libkvxdom exports; everything else in the library is hidden.
#ifndef KVXDOM_EXPORT_H
#define KVXDOM_EXPORT_H

#define KVXDOM_API __attribute__((visibility("default")))

#endif
