// The commands, one a file. Each prints to `output`; Failure and WrongUsage come out of it.
#ifndef XDM_COMMANDS_H
#define XDM_COMMANDS_H

#include "options.h"
#include "output.h"

void printTables(const Options& options, Output& output);
void showModel(const Options& options, Output& output);
void showPage(const Options& options, Output& output);
void printColumns(const Options& options, Output& output);
void printToRowsQuery(const Options& options, Output& output);
void printFromRowsQuery(const Options& options, Output& output);
void saveModel(const Options& options, Output& output);
void printRows(const Options& options, Output& output);
void printDocument(const Options& options, Output& output);

#endif
