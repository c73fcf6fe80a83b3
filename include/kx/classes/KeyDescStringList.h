// SPDX-License-Identifier: MIT
#pragma once
// Keys paired with descriptions (combo boxes, lookups): entry i of one list belongs to entry i
// of the other. Lookups never raise.

#include <kx/classes/Component.h>
#include <kx/rtl/StringList.h>
#include <kx/rtl/Variants.h>

namespace kx {

class KX_API TKxKeyDescStringList : public TKxComponent {
  KX_CLASS(TKxKeyDescStringList, TKxComponent)
public:
  explicit TKxKeyDescStringList(TComponent* AOwner = nullptr);
  ~TKxKeyDescStringList() override;

  TStringList* KeyValues() const { return FKeyValues; }
  TStringList* Descriptions() const { return FDescriptions; }
  void SetKeyValues(TStrings* Value) { FKeyValues->Assign(Value); }
  void SetDescriptions(TStrings* Value) { FDescriptions->Assign(Value); }

  void Clear();
  void AddItem(const AnsiString& Key, const AnsiString& Description);
  // The key in decimal.
  void AddItem(int32_t Key, const AnsiString& Description);
  // The key is the new entry's index in decimal.
  void AddItem(const AnsiString& Description);
  void AddItems(TStrings* Strings);
  // Another key/description list: both lists. A string list: its strings become the
  // descriptions, keyed 0, 1, 2 ...
  void Assign(TPersistent* Source) override;

  // The description of the key (an integer variant in decimal, anything else as its
  // string); empty when absent.
  AnsiString GetDescription(const Variant& Key) const;
  // The key of the first matching description; empty when absent.
  AnsiString GetStrKeyValue(const AnsiString& Description) const;
  // That key as a number; -1 when absent or not a number.
  int32_t GetIntKeyValue(const AnsiString& Description) const;

private:
  TStringList* FKeyValues;
  TStringList* FDescriptions;
};

} // namespace kx
