// Marks what libkvxlog exports; everything else in the library is hidden.
#ifndef KVXLOG_EXPORT_H
#define KVXLOG_EXPORT_H

#define KVXLOG_API __attribute__((visibility("default")))

#endif
