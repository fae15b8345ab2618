// Marks what libkvxbase exports; everything else in the library is hidden.
#ifndef KVXBASE_EXPORT_H
#define KVXBASE_EXPORT_H

#define KVXBASE_API __attribute__((visibility("default")))

#endif
