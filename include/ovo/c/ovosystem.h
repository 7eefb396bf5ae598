/** @file
 * The whole C interface of the library: `#include <ovo/c/ovosystem.h>` in C or any
 * language that calls C, and link with ovosystem (on Windows with the import library
 * ovosystem.lib, or libovosystem.dll.a for MinGW-w64).
 */
#ifndef OVO_C_OVOSYSTEM_H
#define OVO_C_OVOSYSTEM_H

#include <ovo/c/base.h>
#include <ovo/c/cards.h>
#include <ovo/c/ipc.h>
#include <ovo/c/log.h>
#include <ovo/c/serial.h>

#endif
