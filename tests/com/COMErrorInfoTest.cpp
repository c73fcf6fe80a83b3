// SPDX-License-Identifier: MIT
// Exceptions carried across a safe-call boundary as result codes and error information, and
// raised again on the caller's side; under Windows through real COM activation.
#include <kx/Package.h>
#include <kx/rtl/Files.h>
#include <kx/sysutils/ExceptionRegistry.h>
#include <kx/uKxCOMObj.h>

#include <gtest/gtest.h>

#include <memory>
#include <thread>

#if defined(_WIN32)
#include <windows.h>

#include <oleauto.h>
#endif

namespace test {

using namespace kx;

class EOrderError : public EKxException {
  KX_EXCEPTION_CLASS(EOrderError, EKxException)
};
KX_IMPLEMENT_EXCEPTION(EOrderError, EKxException, "COMErrorInfoTest")

class EOrderCancelled : public EKxAbort {
  KX_EXCEPTION_CLASS(EOrderCancelled, EKxAbort)
};
KX_IMPLEMENT_EXCEPTION(EOrderCancelled, EKxAbort, "COMErrorInfoTest")

// Named like the registry's entry class, which is the one name the by-name lookup matches.
class TExceptionClass : public Exception {
  KX_EXCEPTION_CLASS(TExceptionClass, Exception)
};
KX_IMPLEMENT_EXCEPTION(TExceptionClass, Exception, "COMErrorInfoTest")

// A service whose one method fails with the exception the code asks for.
struct IOrderService : IInterface {
  virtual kx::HRESULT KX_STDCALL Place(int32_t Code) = 0;
};

} // namespace test

KX_INTERFACE_GUID(test::IOrderService, "{6F1C2A52-3D4B-4E0A-9A57-0C1E2D3F4A5B}")

namespace test {

class TOrderService : public TKxInterfacedObject, public IOrderService {
  KX_CLASS(TOrderService, TKxInterfacedObject)
public:
  TOrderService() = default;
  KX_FORWARD_IINTERFACE(TKxInterfacedObject)
  bool GetInterface(const TGUID& IID, void** Obj) override {
    return detail::GetInterfaceAs<IOrderService>(this, IID, Obj) ||
           TKxInterfacedObject::GetInterface(IID, Obj);
  }
  kx::HRESULT KX_STDCALL Place(int32_t Code) override {
    return KxSafeCall(IIDOf<IOrderService>(), u"Orders", [Code] {
      switch (Code) {
      case 0:
        return;
      case 1:
        throw EConvertError("not a number");
      case 2:
        throw EOrderCancelled("cancelled", 77);
      case 3:
        throw std::runtime_error("foreign");
      default:
        throw EOrderError(Format("order %d refused", {Code}), Code);
      }
    });
  }
};
KX_IMPLEMENT_CLASS(TOrderService, TKxInterfacedObject, "COMErrorInfoTest")

// Each test starts with an empty registry, silent exceptions off and no error information.
class COMErrorInfo : public ::testing::Test {
protected:
  void SetUp() override { Reset(); }
  void TearDown() override { Reset(); }
  static void Reset() {
    kx::detail::ClearExceptionRegistry();
    KxSetSilentServerExceptions(false);
  }
  static IPtr<IKxCOMErrorInfo> NewInfo() {
    auto* Info = TKxCOMErrorInfo::Create(IIDOf<IOrderService>(), u"orders", u"Orders", u"text",
                                         u"help.chm", 12);
    return IPtr<IKxCOMErrorInfo>(static_cast<IKxCOMErrorInfo*>(Info));
  }
  static TKxCOMErrorInfo* Obj(const IPtr<IKxCOMErrorInfo>& I) {
    return static_cast<TKxCOMErrorInfo*>(I.Get());
  }
};

TEST_F(COMErrorInfo, PopulateStoresTheCodeAndReturnsPositiveCodesAsUnexpected) {
  auto I = NewInfo();
  EXPECT_EQ(Obj(I)->Populate(&static_cast<const Exception&>(EKxException("x", 42))),
            int32_t(0x8000FFFF));
  EXPECT_EQ(Obj(I)->ErrorCode(), 42);
  EXPECT_EQ(Obj(I)->ExceptionClassName(), u"EKxException");
  EXPECT_EQ(Obj(I)->IsSilent(), 0);
  EXPECT_EQ(Obj(I)->Populate(&static_cast<const Exception&>(EKxException("x", -2147467259))),
            -2147467259);
  EXPECT_EQ(Obj(I)->Populate(&static_cast<const Exception&>(EKxException("x", 0))), 0);

  // Aborts are silent and keep their code, as do OS and I/O errors.
  EXPECT_EQ(Obj(I)->Populate(&static_cast<const Exception&>(EOrderCancelled("c", -5))), -5);
  EXPECT_EQ(Obj(I)->IsSilent(), -1);
  EXPECT_EQ(Obj(I)->ExceptionClassName(), u"EOrderCancelled");
  EOSError Os("denied");
  Os.ErrorCode = 5;
  Obj(I)->Populate(&Os);
  EXPECT_EQ(Obj(I)->ErrorCode(), 5);
  EXPECT_EQ(Obj(I)->IsSilent(), 0);
  EInOutError Io("disk");
  Io.ErrorCode = -3;
  EXPECT_EQ(Obj(I)->Populate(&Io), -3);

  // A plain abort is silent but has no code of its own.
  EXPECT_EQ(Obj(I)->Populate(&static_cast<const Exception&>(EAbort(""))), int32_t(0x8000FFFF));
  EXPECT_EQ(Obj(I)->ErrorCode(), 1);
  EXPECT_EQ(Obj(I)->IsSilent(), -1);

  // A silent stand-in reports the class it stands for.
  EKxSilentForInProcessServer Silent("s", 9);
  Silent.ExceptionClassName = "EOrderError";
  Obj(I)->Populate(&Silent);
  EXPECT_EQ(Obj(I)->ExceptionClassName(), u"EOrderError");
  EXPECT_EQ(Obj(I)->ErrorCode(), 9);
  EXPECT_EQ(Obj(I)->IsSilent(), -1);
}

TEST_F(COMErrorInfo, OtherClassesGetCodeOneEvenWhenRegisteredUnderTheirName) {
  auto I = NewInfo();
  const EConvertError E("bad");
  EXPECT_FALSE(TKxCOMErrorInfo::CanHandle(E.ClassType(), &E));
  EXPECT_EQ(Obj(I)->Populate(&E), int32_t(0x8000FFFF));
  EXPECT_EQ(Obj(I)->ErrorCode(), 1);
  // The by-name lookup compares with the registry's own entry class name, so registering
  // EConvertError changes nothing for it.
  KxRegisterExceptionClass(AnsiString("conv"), 7, EConvertError::ClassInfo());
  EXPECT_FALSE(TKxCOMErrorInfo::CanHandle(E.ClassType(), &E));
  Obj(I)->Populate(&E);
  EXPECT_EQ(Obj(I)->ErrorCode(), 1);
  // Only an exception class that happens to carry the entry class's name is found, with the
  // first entry's code.
  const TExceptionClass Odd("odd");
  EXPECT_TRUE(TKxCOMErrorInfo::CanHandle(Odd.ClassType(), &Odd));
  Obj(I)->Populate(&Odd);
  EXPECT_EQ(Obj(I)->ErrorCode(), 7);
  kx::detail::ClearExceptionRegistry();
  KxRegisterExceptionClass(AnsiString("conv"), 0, EConvertError::ClassInfo());
  EXPECT_FALSE(TKxCOMErrorInfo::CanHandle(Odd.ClassType(), &Odd));
}

TEST_F(COMErrorInfo, CanHandleTheLibrarysAbortsAndSystemErrors) {
  EXPECT_FALSE(TKxCOMErrorInfo::CanHandle(nullptr, nullptr));
  const EKxException A("a", 0);
  const EOrderCancelled B("b", 0);
  const EAbort C("c");
  const EOSError D("d");
  const EInOutError F("f");
  for (const Exception* E : std::initializer_list<const Exception*>{&A, &B, &C, &D, &F})
    EXPECT_TRUE(TKxCOMErrorInfo::CanHandle(E->ClassType(), E)) << E->ClassName();
  const EListError G("g");
  EXPECT_FALSE(TKxCOMErrorInfo::CanHandle(G.ClassType(), &G));
}

TEST_F(COMErrorInfo, TheObjectKeepsItsFieldsAndIsTheThreadsLatestWhileItLives) {
  {
    auto I = NewInfo();
    EXPECT_EQ(KxLastCOMErrorInfo(), Obj(I));
    TGUID G{};
    EXPECT_EQ(I->GetGUID(&G), KX_S_OK);
    EXPECT_EQ(G, IIDOf<test::IOrderService>());
    WideChar* S = nullptr;
    I->GetSource(&S);
    EXPECT_EQ(KxTakeBSTR(S), u"Orders");
    I->GetDescription(&S);
    EXPECT_EQ(KxTakeBSTR(S), u"text");
    I->GetHelpFile(&S);
    EXPECT_EQ(KxTakeBSTR(S), u"help.chm");
    I->GetErrorGroup(&S);
    EXPECT_EQ(KxTakeBSTR(S), u"orders");
    uint32_t Help = 0;
    I->GetHelpContext(&Help);
    EXPECT_EQ(Help, 12u);
    // Nothing from an exception yet.
    int32_t Code = -1;
    int16_t Silent = 1;
    I->GetErrorCode(&Code);
    I->GetIsSilent(&Silent);
    I->GetExceptionClassName(&S);
    EXPECT_EQ(Code, 0);
    EXPECT_EQ(Silent, 0);
    EXPECT_EQ(KxTakeBSTR(S), u"");
    I->SetErrorCode(3);
    I->SetIsSilent(-1);
    I->SetExceptionClassName(u"EOrderError");
    EXPECT_EQ(Obj(I)->ErrorCode(), 3);
    EXPECT_EQ(Obj(I)->IsSilent(), -1);
    EXPECT_EQ(Obj(I)->ExceptionClassName(), u"EOrderError");
    EXPECT_EQ(I->GetSource(nullptr), KX_E_POINTER);
    EXPECT_TRUE(Supports<kx::IErrorInfo>(I));
    // Another thread has its own latest object.
    std::thread([] { EXPECT_EQ(KxLastCOMErrorInfo(), nullptr); }).join();
  }
  EXPECT_EQ(KxLastCOMErrorInfo(), nullptr);
  // The newest object is the latest; freeing any of them, even an older one, empties the slot.
  auto Older = NewInfo();
  auto Newer = NewInfo();
  EXPECT_EQ(KxLastCOMErrorInfo(), Obj(Newer));
  Older.Reset();
  EXPECT_EQ(KxLastCOMErrorInfo(), nullptr);
}

TEST_F(COMErrorInfo, SilentServerExceptionsFollowTheFlagAndTheThreadsCounter) {
  KxRegisterExceptionClass(AnsiString("orders"), 42, test::EOrderError::ClassInfo());
  EXPECT_EQ(KxGetExceptionClass("orders", 42, false), test::EOrderError::ClassInfo());
  KxSetSilentServerExceptions(true);
  EXPECT_EQ(KxGetExceptionClass("orders", 42, false), EKxSilentForInProcessServer::ClassInfo());
  // Even for nothing registered.
  EXPECT_EQ(KxGetExceptionClass("nowhere", 1, false), EKxSilentForInProcessServer::ClassInfo());
  EXPECT_EQ(KxGetExceptionClass("orders", 42, true), test::EOrderError::ClassInfo());
  KxDisableSilentServerExceptions();
  KxDisableSilentServerExceptions();
  EXPECT_EQ(KxGetExceptionClass("orders", 42, false), test::EOrderError::ClassInfo());
  std::thread([] {
    EXPECT_EQ(KxGetExceptionClass("orders", 42, false), EKxSilentForInProcessServer::ClassInfo());
  }).join();
  KxEnableSilentServerExceptions();
  EXPECT_EQ(KxGetExceptionClass("orders", 42, false), test::EOrderError::ClassInfo());
  KxEnableSilentServerExceptions();
  EXPECT_EQ(KxGetExceptionClass("orders", 42, false), EKxSilentForInProcessServer::ClassInfo());
}

TEST_F(COMErrorInfo, CreateExceptionBuildsTheRegisteredClass) {
  std::unique_ptr<Exception> E(KxCreateException("nowhere", 5, "lost"));
  ASSERT_EQ(E->ClassType(), EKxException::ClassInfo());
  EXPECT_EQ(E->Message(), "lost");
  EXPECT_EQ(KxExceptionErrorCode(*E), 5);

  KxRegisterExceptionClass(AnsiString("orders"), 42, test::EOrderError::ClassInfo());
  KxRegisterExceptionClass(AnsiString("orders"), 43, test::EOrderCancelled::ClassInfo());
  KxRegisterExceptionClass(AnsiString("ole"), 44, EOleSysError::ClassInfo());
  KxRegisterExceptionClass(AnsiString("plain"), 45, EConvertError::ClassInfo());
  E.reset(KxCreateException("orders", 42, "refused %s %d", {"order", 7}));
  ASSERT_EQ(E->ClassType(), test::EOrderError::ClassInfo());
  EXPECT_EQ(E->Message(), "refused order 7");
  EXPECT_EQ(KxExceptionErrorCode(*E), 42);
  E.reset(KxCreateException("orders", 43, "c"));
  ASSERT_EQ(E->ClassType(), test::EOrderCancelled::ClassInfo());
  EXPECT_EQ(KxExceptionErrorCode(*E), 43);
  E.reset(KxCreateException("ole", 44, "o"));
  ASSERT_EQ(E->ClassType(), EOleSysError::ClassInfo());
  EXPECT_EQ(static_cast<EOleSysError*>(E.get())->ErrorCode, 44);
  E.reset(KxCreateException("plain", 45, "p"));
  ASSERT_EQ(E->ClassType(), EConvertError::ClassInfo());
  EXPECT_EQ(E->Message(), "p");

  // In a server with silent exceptions, the stand-in names the class it replaces.
  KxSetSilentServerExceptions(true);
  E.reset(KxCreateException("orders", 42, "quiet"));
  ASSERT_EQ(E->ClassType(), EKxSilentForInProcessServer::ClassInfo());
  EXPECT_EQ(static_cast<EKxSilentForInProcessServer*>(E.get())->ExceptionClassName, "EOrderError");
  EXPECT_EQ(KxExceptionErrorCode(*E), 42);
  E.reset(KxCreateException("nowhere", 1, "quiet"));
  EXPECT_EQ(static_cast<EKxSilentForInProcessServer*>(E.get())->ExceptionClassName, "");
}

// The caller's side: the failed result raised again as the exception the callee raised.
template <class E>
E CallAndCatch(test::IOrderService* S, int32_t Code) {
  try {
    SafeCallCheck(S->Place(Code));
  } catch (const E& Caught) {
    return Caught;
  }
  ADD_FAILURE() << "nothing of the expected class was raised for " << Code;
  return E("", 0);
}

void CheckRoundTrips(test::IOrderService* S) {
  EXPECT_NO_THROW(SafeCallCheck(S->Place(0)));
  // Registered: the same class and code come back.
  const test::EOrderError Refused = CallAndCatch<test::EOrderError>(S, 42);
  EXPECT_EQ(Refused.ClassType(), test::EOrderError::ClassInfo());
  EXPECT_EQ(Refused.ErrorCode, 42);
  EXPECT_EQ(Refused.Message(), "order 42 refused");
  const test::EOrderCancelled Cancelled = CallAndCatch<test::EOrderCancelled>(S, 2);
  EXPECT_EQ(Cancelled.ErrorCode, 77);
  // Not registered: the library's exception with the code and the message.
  const EKxException Other = CallAndCatch<EKxException>(S, 99);
  EXPECT_EQ(Other.ClassType(), EKxException::ClassInfo());
  EXPECT_EQ(Other.ErrorCode, 99);
  EXPECT_EQ(Other.Message(), "order 99 refused");
  // Not the library's: an OLE error with the result and the message.
  try {
    SafeCallCheck(S->Place(1));
    ADD_FAILURE();
  } catch (const EOleSysError& E) {
    EXPECT_EQ(E.ErrorCode, int32_t(0x8000FFFF));
    EXPECT_EQ(E.Message(), "not a number");
  }
  try {
    SafeCallCheck(S->Place(3));
    ADD_FAILURE();
  } catch (const EOleSysError& E) {
    EXPECT_EQ(E.ErrorCode, int32_t(0x8000FFFF));
  }
}

void RegisterOrderErrors() {
  KxRegisterExceptionClass(AnsiString("orders"), 42, test::EOrderError::ClassInfo());
  KxRegisterExceptionClass(AnsiString("orders"), 77, test::EOrderCancelled::ClassInfo());
}

TEST_F(COMErrorInfo, ExceptionsComeBackThroughTheSafeCallHandler) {
  RegisterOrderErrors();
  IPtr<test::IOrderService> S = Supports<test::IOrderService>(
      static_cast<IInterface*>(static_cast<TKxInterfacedObject*>(TOrderService::Create())));
  ASSERT_TRUE(S);
  CheckRoundTrips(S.Get());
  // A caller that is itself an in-process server gets the silent stand-in, naming the class.
  KxSetSilentServerExceptions(true);
  try {
    SafeCallCheck(S->Place(42));
    ADD_FAILURE();
  } catch (const EKxSilentForInProcessServer& E) {
    EXPECT_EQ(E.ExceptionClassName, "EOrderError");
    EXPECT_EQ(E.ErrorCode, 42);
  }
  KxDisableSilentServerExceptions();
  EXPECT_THROW(SafeCallCheck(S->Place(42)), test::EOrderError);
  KxEnableSilentServerExceptions();
}

TEST_F(COMErrorInfo, TheHandlerIsInstalledByTheFirstStartAndRestoredByTheLastShutDown) {
  const TSafeCallErrorProc Ours = GetSafeCallErrorProc();
  ASSERT_NE(Ours, nullptr);
  KxInitialize();
  KxFinalize();
  EXPECT_EQ(GetSafeCallErrorProc(), Ours);
  // Shut the library down, put another handler in place, and start it twice.
  KxFinalize();
  EXPECT_EQ(GetSafeCallErrorProc(), nullptr);
  const TSafeCallErrorProc Other = [](kx::HRESULT, void*) { throw EAbort("other"); };
  SetSafeCallErrorProc(Other);
  KxInitialize();
  KxInitialize();
  EXPECT_EQ(GetSafeCallErrorProc(), Ours);
  KxFinalize();
  EXPECT_EQ(GetSafeCallErrorProc(), Ours);
  KxFinalize();
  EXPECT_EQ(GetSafeCallErrorProc(), Other);
  EXPECT_THROW(SafeCallCheck(int32_t(0x80004005)), EAbort);
  SetSafeCallErrorProc(nullptr);
  EXPECT_THROW(SafeCallCheck(int32_t(0x80004005)), ESafecallException);
  KxInitialize();
  EXPECT_EQ(GetSafeCallErrorProc(), Ours);
}

} // namespace test

#if defined(_WIN32)

// Apart from the library's names: the platform's result macros name its own HRESULT.
namespace comtest {

using kx::IPtr;
using kx::TGUID;
using test::COMErrorInfo;

// A class object for the service, registered with COM for this process.
class TOrderFactory : public IClassFactory {
public:
  ::HRESULT STDMETHODCALLTYPE QueryInterface(REFIID IID, void** Obj) override {
    if (IID == IID_IUnknown || IID == IID_IClassFactory) {
      *Obj = this;
      return S_OK;
    }
    *Obj = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  ::HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* Outer, REFIID IID, void** Obj) override {
    if (Outer) return CLASS_E_NOAGGREGATION;
    IPtr<kx::IInterface> S(static_cast<kx::IInterface*>(
        static_cast<kx::TKxInterfacedObject*>(test::TOrderService::Create())));
    return S->QueryInterface(*reinterpret_cast<const TGUID*>(&IID), Obj);
  }
  ::HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

TEST_F(COMErrorInfo, ExceptionsComeBackThroughRealCOM) {
  test::RegisterOrderErrors();
  ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
  static const CLSID ClsOrders = {
      0x2B4F7E10, 0x6A3C, 0x4D21, {0x9E, 0x55, 0x31, 0x7A, 0x0B, 0xC8, 0x44, 0x19}};
  TOrderFactory Factory;
  DWORD Cookie = 0;
  ASSERT_EQ(
      CoRegisterClassObject(ClsOrders, &Factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &Cookie),
      S_OK);
  void* P = nullptr;
  const TGUID& Iid = kx::IIDOf<test::IOrderService>();
  ASSERT_EQ(CoCreateInstance(ClsOrders, nullptr, CLSCTX_INPROC_SERVER,
                             *reinterpret_cast<const IID*>(&Iid), &P),
            S_OK);
  IPtr<test::IOrderService> S =
      IPtr<test::IOrderService>::Attach(static_cast<test::IOrderService*>(P));
  test::CheckRoundTrips(S.Get());

  // The error information is the platform's: oleaut32 hands it out and reads it.
  EXPECT_EQ(S->Place(42), int32_t(0x8000FFFF));
  ::IErrorInfo* Info = nullptr;
  ASSERT_EQ(::GetErrorInfo(0, &Info), S_OK);
  BSTR Description = nullptr, Source = nullptr;
  GUID Guid{};
  Info->GetDescription(&Description);
  Info->GetSource(&Source);
  Info->GetGUID(&Guid);
  EXPECT_STREQ(Description, L"order 42 refused");
  EXPECT_STREQ(Source, L"Orders");
  EXPECT_EQ(SysStringLen(Source), 6u);
  EXPECT_EQ(memcmp(&Guid, &Iid, sizeof Guid), 0);
  SysFreeString(Description);
  SysFreeString(Source);
  Info->Release();

  S.Reset();
  CoRevokeClassObject(Cookie);
  CoUninitialize();
}

} // namespace comtest

#endif
