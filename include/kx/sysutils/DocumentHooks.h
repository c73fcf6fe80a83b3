// SPDX-License-Identifier: MIT
// The process-wide hooks through which another package creates and reads JSON and XML documents.
#pragma once
// Each slot is empty at start; setting one replaces its function, and an empty function
// clears it. The slots are meant to be set once at start-up by the package that provides the
// documents; they are atomic, so a late set is still safe against running calls.

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Interfaces.h>
#include <kx/rtl/Variants.h>

namespace kx {

inline constexpr const char* SQuillonRequired = "Quillon is required for this functionality!";

// Makes a document from its text; the document is a reference-counted interface.
using TKxCreateDocFunc = IPtr<IInterface> (*)(const AnsiString& S);
// The value at Path (a path or name the document understands) of a document.
using TKxGetDocValueFunc = Variant (*)(const IPtr<IInterface>& Doc, const AnsiString& Path);

KX_API void SetCreateJSONDoc(TKxCreateDocFunc Func);
KX_API void SetCreateXMLDoc(TKxCreateDocFunc Func);
KX_API void SetGetJSONDocValue(TKxGetDocValueFunc Func);
KX_API void SetGetXMLDocValue(TKxGetDocValueFunc Func);
// Call the registered function; Exception "Quillon is required for this functionality!" when
// the slot is empty.
KX_API IPtr<IInterface> KxCreateJSONDoc(const AnsiString& S);
KX_API IPtr<IInterface> KxCreateXMLDoc(const AnsiString& S);
KX_API Variant KxGetJSONDocValue(const IPtr<IInterface>& Doc, const AnsiString& Path);
KX_API Variant KxGetXMLDocValue(const IPtr<IInterface>& Doc, const AnsiString& Path);

} // namespace kx
