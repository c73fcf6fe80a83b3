#pragma once
// The platform layer: every OS call of the library goes through these functions.
// Failures return a null handle, false or 0 and leave the code in LastError(), as Win32 does.

#include <kx/rtl/Strings.h>
#include <kx/rtl/System.h>

namespace kx::platform {

// Threads and time.
TThreadID CurrentThreadId();
uint32_t TickCount();
void Sleep(uint32_t Milliseconds);
// Names the calling OS thread for debuggers and tools, truncated as the OS requires.
void SetOSThreadName(const AnsiString& Name);

// Error codes: Win32 codes on Windows; errno values on POSIX, where failures the library
// reports with Win32 meaning (code-page conversions) use the Win32 code.
uint32_t LastError();
void SetLastError(uint32_t Code);
AnsiString ErrorMessage(uint32_t Code);
inline constexpr uint32_t ERROR_INVALID_PARAMETER_ = 87;
inline constexpr uint32_t ERROR_INSUFFICIENT_BUFFER_ = 122;
inline constexpr uint32_t ERROR_NO_UNICODE_TRANSLATION_ = 1113;

// Waitable objects: semaphores and events share one handle type.
using Handle = void*;
Handle CreateSemaphore(int32_t InitialCount, int32_t MaximumCount);
bool ReleaseSemaphore(Handle Semaphore, int32_t Count);
Handle CreateEvent(bool ManualReset, bool InitialState);
bool SetEvent(Handle Event);
bool ResetEvent(Handle Event);
TWaitResult WaitFor(Handle Object, uint32_t TimeoutMs);
void CloseHandle(Handle Object);

// The OS reader/writer lock behind TKxMultiReadSingleWrite. The lock word is
// RWLockWordSize bytes, zeroed before first use; the functions follow the Win32 SRW ones.
inline constexpr size_t RWLockWordSize = 64;
struct TRWLockFunctions {
  void(KX_STDCALL* AcquireExclusive)(void* Lock);
  uint8_t(KX_STDCALL* TryAcquireExclusive)(void* Lock);
  void(KX_STDCALL* ReleaseExclusive)(void* Lock);
  void(KX_STDCALL* AcquireShared)(void* Lock);
  uint8_t(KX_STDCALL* TryAcquireShared)(void* Lock);
  void(KX_STDCALL* ReleaseShared)(void* Lock);
};
// Looks the functions up (by name in kernel32 on Windows). Returns false when the module
// is not there; a function the OS lacks is left null.
bool BindRWLockFunctions(TRWLockFunctions& Functions);
// Releases whatever the OS lock holds once the lock word is no longer used.
void DestroyRWLock(void* Lock);

// Modules and exported functions, looked up at run time.
void* GetModule(const char* Name);
void* LoadModule(const char* Name);
void* GetProc(void* Module, const char* Name);

// Code pages: the process ANSI code page and the MultiByteToWideChar/WideCharToMultiByte
// pair (counts in code units; a null or 0-length destination asks for the size).
uint32_t SystemCodePage();
inline constexpr uint32_t MB_ERR_INVALID_CHARS_ = 0x08;
inline constexpr uint32_t WC_ERR_INVALID_CHARS_ = 0x80;
int32_t MultiByteToWide(uint32_t CodePage, uint32_t Flags, const char* Src, int32_t SrcLen,
                        char16_t* Dst, int32_t DstLen);
int32_t WideToMultiByte(uint32_t CodePage, uint32_t Flags, const char16_t* Src, int32_t SrcLen,
                        char* Dst, int32_t DstLen);
// Whether the platform knows the code page.
bool IsValidCodePage(uint32_t CodePage);

} // namespace kx::platform
