// SPDX-License-Identifier: MIT
#pragma once
// uKxThreads: critical sections, the multi-reader/single-writer lock, simple events and
// thread names, and the thread-safe value holder.

#include <kx/threads/CriticalSection.h>
#include <kx/threads/MultiReadSingleWrite.h>
#include <kx/threads/SimpleEvent.h>
#include <kx/threads/ThreadName.h>
#include <kx/threads/ThreadSafeType.h>
