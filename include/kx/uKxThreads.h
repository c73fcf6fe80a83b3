#pragma once
// uKxThreads: critical sections, the multi-reader/single-writer lock, simple events and
// thread names.

#include <kx/threads/CriticalSection.h>
#include <kx/threads/MultiReadSingleWrite.h>
#include <kx/threads/SimpleEvent.h>
#include <kx/threads/ThreadName.h>
