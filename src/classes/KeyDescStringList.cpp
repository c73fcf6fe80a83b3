// SPDX-License-Identifier: MIT
// Keys and descriptions side by side.
#include <kx/classes/KeyDescStringList.h>

#include <kx/rtl/SysUtils.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxKeyDescStringList, TKxComponent, "uKxClasses")

TKxKeyDescStringList::TKxKeyDescStringList(TComponent* AOwner)
    : TKxComponent(AOwner), FKeyValues(TStringList::Create()),
      FDescriptions(TStringList::Create()) {}

TKxKeyDescStringList::~TKxKeyDescStringList() {
  FDescriptions->Free();
  FKeyValues->Free();
}

void TKxKeyDescStringList::Clear() {
  FKeyValues->Clear();
  FDescriptions->Clear();
}

void TKxKeyDescStringList::AddItem(const AnsiString& Key, const AnsiString& Description) {
  FKeyValues->Add(Key);
  FDescriptions->Add(Description);
}

void TKxKeyDescStringList::AddItem(int32_t Key, const AnsiString& Description) {
  AddItem(IntToStr(Key), Description);
}

void TKxKeyDescStringList::AddItem(const AnsiString& Description) {
  const int32_t Index = FDescriptions->Add(Description);
  FKeyValues->Add(IntToStr(Index));
}

void TKxKeyDescStringList::AddItems(TStrings* Strings) {
  for (int32_t I = 0; I < Strings->Count(); ++I) AddItem(Strings->Strings(I));
}

void TKxKeyDescStringList::Assign(TPersistent* Source) {
  if (auto* Other = dynamic_cast<TKxKeyDescStringList*>(Source)) {
    FKeyValues->Assign(Other->FKeyValues);
    FDescriptions->Assign(Other->FDescriptions);
  } else if (auto* Strings = dynamic_cast<TStrings*>(Source)) {
    FDescriptions->Assign(Strings);
    FKeyValues->Clear();
    for (int32_t I = 0; I < FDescriptions->Count(); ++I) FKeyValues->Add(IntToStr(I));
  } else {
    TKxComponent::Assign(Source);
  }
}

AnsiString TKxKeyDescStringList::GetDescription(const Variant& Key) const {
  AnsiString Text;
  try {
    Text = VarToStr(Key);
  } catch (const Exception&) {
    // A key that has no text form matches nothing.
    return {};
  }
  const int32_t I = FKeyValues->IndexOf(Text);
  return I >= 0 && I < FDescriptions->Count() ? FDescriptions->Strings(I) : AnsiString();
}

AnsiString TKxKeyDescStringList::GetStrKeyValue(const AnsiString& Description) const {
  const int32_t I = FDescriptions->IndexOf(Description);
  return I >= 0 && I < FKeyValues->Count() ? FKeyValues->Strings(I) : AnsiString();
}

int32_t TKxKeyDescStringList::GetIntKeyValue(const AnsiString& Description) const {
  return StrToIntDef(GetStrKeyValue(Description), -1);
}

} // namespace kx
