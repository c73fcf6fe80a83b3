#pragma once
// uKxSysUtils: the library's exceptions and their error-code registry.

#include <kx/sysutils/ExceptionRegistry.h>
#include <kx/sysutils/KxException.h>
