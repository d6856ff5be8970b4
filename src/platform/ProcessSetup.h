#pragma once

namespace installer {

// To be called first in main. Fills closed descriptors 0 to 2 with the null device, so that no file
// opened later can be taken for standard output, and ignores SIGPIPE and SIGXFSZ, so that a write
// that cannot be done is an error of that write and not the end of the process. From then on
// signals that ask the process to end are noted (Interruption.h), and the system log shows its
// lines under the program's name, with the process's number.
void setUpProcess();

// The same for a program that only answers: closed descriptors are filled so that writing to them
// fails, for nobody would see what is written, and signals that ask the process to end do end it.
void setUpAnsweringProcess();

// Whether setUpProcess() was called: the connection to the system log is our own then. A host of
// the library may have told it to show lines elsewhere, too.
[[nodiscard]] bool ownsSystemLog();

// Opens the databases of users and groups, after filling the descriptors, for what the databases
// open stays open. To be called before main: a C library that is given no memory here can end the
// process, and then nothing has begun. Later look-ups answer a lack.
void openUserDatabases();

}  // namespace installer
