// SPDX-License-Identifier: MIT
#pragma once
// TKxStringStream: a memory stream that holds text in one code page and takes 8-bit and 16-bit
// text, converting it to that code page.

#include <kx/classes/MemoryStream.h>
#include <kx/rtl/Variants.h>

namespace kx {

class KX_API TKxStringStream : public TKxMemoryStream {
  KX_CLASS(TKxStringStream, TKxMemoryStream)
public:
  // Empty, growing in steps of BlockSize.
  TKxStringStream(uint16_t ACodePage, uint32_t BlockSize);
  // The bytes of S, taken as text of ACodePage; position 0.
  TKxStringStream(const AnsiString& S, uint16_t ACodePage);
  // The UTF-16LE bytes of W, code page 1200; position 0.
  explicit TKxStringStream(const UnicodeString& W);
  // The bytes of S, taken as UTF-8 (65001); position 0.
  explicit TKxStringStream(const AnsiString& S);
  // Over Size bytes of the caller's memory, which is never resized.
  TKxStringStream(void* Buffer, uint32_t Size, uint16_t ACodePage);

  uint16_t CodePage() const { return FCodePage; }
  // The longest character of CodePage in bytes.
  uint16_t MaxCharSize() const { return FMaxCharSize; }

  // Empties this stream and takes Source's code page and content.
  virtual void Assign(TKxStringStream* Source);
  // At the position. 8-bit text is system-code-page text (stored as it is in a code-page-0
  // stream); 16-bit text is stored as UTF-16LE in a 1200 stream, else converted.
  virtual void WriteChar(AnsiChar C);
  virtual void WriteChar(WideChar C);
  virtual void Write(const UnicodeString& W);
  virtual void Write(const AnsiString& S);
  using TKxMemoryStream::Write;

  // At the end; the position is left there.
  void AddChar(AnsiChar C);
  void AddChar(WideChar C);
  void Add(const UnicodeString& W);
  // S is text of ACodePage: appended as it is when that is this stream's code page.
  void Add(const AnsiString& S, uint16_t ACodePage);
  void Add(TKxStringStream* Other);
  // Appends the character 0.
  void WriteEOF();

  // The whole content as text, wherever the position is.
  UnicodeString GetWString();
  UnicodeString GetAsString() { return GetWString(); }
  // In the system code page.
  AnsiString GetAString();
  UTF8String GetAsUTF8();
  AnsiString StringData(uint16_t ACodePage);
  // GetWString narrowed by the runtime's default conversion.
  AnsiString GetDataString();
  // The number of characters the content holds, in 16-bit units.
  int64_t GetCharCnt();

  // Each empties the stream, writes and sets the position to 0.
  void SetAString(const AnsiString& S);
  void SetWString(const UnicodeString& W);
  void SetAsString(const UnicodeString& W) { SetWString(W); }
  void SetAsUTF8(const UTF8String& S);
  // A varOleStr of GetWString.
  Variant GetValue();
  // varOleStr text as it is, varString text from the system code page; any other type raises
  // "Unsupported type %d!" with the type code.
  void SetValue(const Variant& V);

  // From the position; at the end the character 0 (the position stays) or an empty string.
  WideChar ReadWChar();
  WideChar ReadChar() { return ReadWChar(); }
  AnsiChar ReadAChar();
  UnicodeString ReadWString(int32_t Count);
  UnicodeString ReadString(int32_t Count) { return ReadWString(Count); }
  AnsiString ReadAString(int32_t Count);

  // Changes the code page, converting the content when UpdateContent. Without it, content
  // in or for 1200 raises; 8-bit content is then reinterpreted.
  void ChangeCodePage(uint16_t NewCodePage, bool UpdateContent);

  // The content in ACodePage, after that code page's byte-order mark when WriteBOM.
  void SaveToStream(TStream* Stream, uint16_t ACodePage, bool WriteBOM);
  void SaveToFile(const AnsiString& FileName, uint16_t ACodePage, bool WriteBOM);
  // In the stream's own code page, with its mark.
  void SaveToFile(const AnsiString& FileName);
  // Appends the text of the file or stream. SourceCodePage -1 leaves the code page to the
  // mark (or 0); a mark that contradicts a given code page raises.
  void LoadFromFile(const AnsiString& FileName, int32_t SourceCodePage = -1);
  void LoadFromStream(TStream* Stream, bool DetectBOM = true, int32_t SourceCodePage = -1);

protected:
  void SetCodePage(uint16_t ACodePage);

private:
  // Appends bytes at the end as they are.
  void AppendBytes(const void* Bytes, size_t Count);
  // Writes 16-bit text at the position in the stream's code page.
  void WriteWide(const WideChar* W, size_t Count);
  // The bytes between the position and the end.
  int64_t Remaining();
  // The low surrogate of the supplementary character that ends at the position, when a read
  // returned only its high surrogate; 0 otherwise.
  WideChar TakePendingLow();
  // The first character at the position in C (both surrogates of a supplementary one, none
  // for bytes that make no character) and the number of bytes it takes.
  int64_t FirstCharacter(UnicodeString& C);
  // Moves over the Bytes of C; the low surrogate of a pair waits for the next read.
  void StepOver(const UnicodeString& C, int64_t Bytes);

  uint16_t FCodePage = 0;
  uint16_t FMaxCharSize = 1;
  // The character whose low surrogate is still to be read: its bytes and that surrogate.
  int64_t FPendingStart = -1;
  int64_t FPendingEnd = -1;
  WideChar FPendingLow = 0;
};

} // namespace kx
