// SPDX-License-Identifier: MIT
// Library objects, an interface of your own and free notification:
//  - a class derived from TKxObjectEx that also implements an interface;
//  - one object owned plainly (OwnedPtr, Free) and one that lives by its interface references;
//  - an observer told when the object it watches goes, so it never keeps a dangling pointer.

#include <kx/rtl/OwnedPtr.h>
#include <kx/uKxClasses.h>

#include <cstdio>
#include <string>

using namespace kx;

// An interface is a struct of pure KX_STDCALL methods over IInterface, with a GUID of its own.
struct IGreeter : IInterface {
  virtual AnsiString KX_STDCALL Greeting() = 0;
};
KX_INTERFACE_GUID(IGreeter, "{5B0C8E51-3C1D-4D7A-9E0B-2F6A41C7D0E3}")

namespace {

int Alive = 0;

class TDocument : public TKxObjectEx, public IGreeter {
  KX_CLASS(TDocument, TKxObjectEx)
public:
  explicit TDocument(AnsiString ATitle) : Title(std::move(ATitle)) { ++Alive; }
  ~TDocument() override { --Alive; }

  // IInterface is reached through two bases: both lead to the object's own reference count.
  KX_FORWARD_IINTERFACE(TKxObjectEx)
  bool GetInterface(const TGUID& IID, void** Obj) override {
    return detail::GetInterfaceAs<IGreeter>(this, IID, Obj) || TKxObjectEx::GetInterface(IID, Obj);
  }
  AnsiString KX_STDCALL Greeting() override { return "Hello from " + Title; }

  AnsiString Title;
};
KX_IMPLEMENT_CLASS(TDocument, TKxObjectEx, "ObjectsDemo")

// Watches one document; the document tells it when it is freed.
class TView : public TKxObjectEx {
  KX_CLASS(TView, TKxObjectEx)
public:
  void Show(TDocument* ADocument) {
    if (FDocument) RemoveFreeNotification(FDocument);
    FDocument = ADocument;
    if (FDocument) FreeNotification(FDocument); // both sides now know each other
  }
  TDocument* Document() const { return FDocument; }

  void KX_STDCALL OnObjectDestroyed(TObject* AObject) override {
    if (AObject == FDocument) {
      std::printf("view: \"%s\" is gone, showing nothing\n", FDocument->Title.c_str());
      FDocument = nullptr;
    }
  }

private:
  TDocument* FDocument = nullptr;
};
KX_IMPLEMENT_CLASS(TView, TKxObjectEx, "ObjectsDemo")

} // namespace

int main() {
  try {
    OwnedPtr<TView> View = MakeOwned<TView>();
    {
      // Owned plainly: freed when Doc goes, and the view is told.
      OwnedPtr<TDocument> Doc = MakeOwned<TDocument>("report.txt");
      View->Show(Doc.Get());
      std::printf("view shows \"%s\", a %s\n", View->Document()->Title.c_str(),
                  View->Document()->ClassName().c_str());
    }
    if (View->Document() != nullptr) return 1;

    // Handed out through an interface: the last reference frees it.
    {
      IPtr<IGreeter> Greeter = Supports<IGreeter>(TDocument::Create("notes.txt"));
      std::printf("%s\n", Greeter->Greeting().c_str());
      // An interface leads back to its object, and on to its other interfaces.
      IPtr<IKxObject> Same = Supports<IKxObject>(Greeter);
      std::printf("implemented by a %s\n", Same->Implementor()->ClassName().c_str());
    }
    if (Alive != 0) {
      std::printf("%d documents were not freed\n", Alive);
      return 1;
    }
    std::printf("all documents freed\n");
    return 0;
  } catch (const Exception& E) {
    std::fprintf(stderr, "%s: %s\n", E.ClassName().c_str(), E.Message().c_str());
    return 1;
  }
}
