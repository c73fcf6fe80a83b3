// SPDX-License-Identifier: MIT
#pragma once
// A multi-reader/single-writer lock over the OS slim reader/writer lock, with a fallback
// on the runtime's synchronizer where the OS has none.

#include <kx/classes/Object.h>

#include <cstddef>

namespace kx {

// Bytes of the lock word: a POSIX reader/writer lock must fit in it.
inline constexpr size_t KxRWLockWordSize = 64;

class KX_API TKxMultiReadSingleWrite : public TKxObject {
  KX_CLASS(TKxMultiReadSingleWrite, TKxObject)
public:
  TKxMultiReadSingleWrite();
  ~TKxMultiReadSingleWrite() override;

  void BeginRead();
  bool TryBeginRead();
  void EndRead();
  void BeginWrite();
  bool TryBeginWrite();
  void EndWrite();

  // Lockable and SharedLockable: std::unique_lock (or std::lock_guard) writes for a scope,
  // std::shared_lock reads.
  void lock() { BeginWrite(); }
  bool try_lock() { return TryBeginWrite(); }
  void unlock() { EndWrite(); }
  void lock_shared() { BeginRead(); }
  bool try_lock_shared() { return TryBeginRead(); }
  void unlock_shared() { EndRead(); }

private:
  // The OS lock itself (zeroed), or in fallback mode a pointer to the synchronizer.
  alignas(16) unsigned char FLock[KxRWLockWordSize] = {};
};

namespace detail {

// The six process-wide operations of TKxMultiReadSingleWrite, named after the OS functions
// they normally hold. Each takes the address of the lock word; the try operations return
// non-zero on success.
struct TKxSRWLockFunctions {
  void(KX_STDCALL* AcquireSRWLockExclusive)(void* Lock);
  uint8_t(KX_STDCALL* TryAcquireSRWLockExclusive)(void* Lock);
  void(KX_STDCALL* ReleaseSRWLockExclusive)(void* Lock);
  void(KX_STDCALL* AcquireSRWLockShared)(void* Lock);
  uint8_t(KX_STDCALL* TryAcquireSRWLockShared)(void* Lock);
  void(KX_STDCALL* ReleaseSRWLockShared)(void* Lock);
};

// The operations in use, set at start-up. Construction and destruction both look at them
// to tell the modes apart, so change them only while no instance exists.
KX_API TKxSRWLockFunctions& KxSRWLockFunctions();
// The fallback routines over the runtime's synchronizer.
KX_API const TKxSRWLockFunctions& KxFallbackSRWLockFunctions();

} // namespace detail

} // namespace kx
