// SPDX-License-Identifier: MIT
#pragma once
// TKxTextParser: a forward-scanning cursor over text in one of three storage forms, with line
// and column counters, up to three marks, selections between positions, and skips by
// comparison or set membership. Memory streams and memory blocks are parsed in place; other
// streams are read in 32 MiB chunks, and a reload keeps every position still in use.

#include <kx/classes/ClassesConsts.h>
#include <kx/classes/Object.h>
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Streams.h>

#include <bitset>
#include <initializer_list>
#include <string_view>

namespace kx {

// How the parsed text stores a character.
enum TKxCharacterSetType : uint8_t {
  SBCS, // one byte, any 8-bit code page
  DBCS, // UTF-16LE, two bytes
  MBCS  // UTF-8, one to four bytes
};

enum TKxTextParserSkipOp : uint8_t {
  sopEq,
  sopLt,
  sopGt,
  sopUnEq,
  sopLtEq,
  sopGtEq,
  sopIn,
  sopNotIn
};

enum TKxTextParserPosType : uint8_t {
  tpPrevPos,
  tpCurPos,
  tpPeekPos,
  tpMarkPos1,
  tpMarkPos2,
  tpMarkPos3
};

inline constexpr const char* SParseEmptyStream = "It is not possible to parse empty streams!";
inline constexpr const char* SInvalidTillPos = "Invalid TillPos specified!";
inline constexpr const char* SInvalidMarkType = "Invalid MarkType specified!";

// A move or read past the end of the text: "Unexpected EOF".
class KX_API EKxTextParserEOF : public Exception {
  KX_EXCEPTION_CLASS(EKxTextParserEOF, Exception)
};

// A set of 8-bit characters for the skip-while-in operations.
class TKxCharSet {
public:
  TKxCharSet() = default;
  TKxCharSet(std::initializer_list<AnsiChar> Chars) {
    for (AnsiChar C : Chars) Include(C);
  }
  // Every character of Chars.
  explicit TKxCharSet(std::string_view Chars) {
    for (AnsiChar C : Chars) Include(C);
  }
  TKxCharSet& Include(AnsiChar C) {
    FBits.set(uint8_t(C));
    return *this;
  }
  // The characters First to Last, both included.
  TKxCharSet& Include(AnsiChar First, AnsiChar Last) {
    for (unsigned C = uint8_t(First); C <= uint8_t(Last); ++C) FBits.set(C);
    return *this;
  }
  TKxCharSet& Exclude(AnsiChar C) {
    FBits.reset(uint8_t(C));
    return *this;
  }
  bool Contains(AnsiChar C) const { return FBits[uint8_t(C)]; }
  // Characters above 255 are never members.
  bool Contains(uint32_t C) const { return C < 256 && FBits[C]; }
  bool Empty() const { return FBits.none(); }

private:
  std::bitset<256> FBits;
};

namespace detail {
struct TTextParserOps;
}

class KX_API TKxTextParser : public TKxObject {
  KX_CLASS(TKxTextParser, TKxObject)
public:
  // The block a stream source is read in.
  static constexpr uint32_t StreamChunkSize = 0x2000000;

  // Parses Stream from its position. Memory streams (the library's and the runtime's) are
  // parsed in place and left at their end; other streams are read in chunks. Code page 1200
  // is UTF-16LE, 65001 UTF-8, any other one byte per character; 1201, 12000 and 12001 raise
  // "The specified encoding is not supported!". An empty stream is an assertion.
  TKxTextParser(TStream* AStream, uint16_t ACodePage, bool AOwnsStream = false);
  // Parses Size bytes at Buffer in place; the bytes stay the caller's and must outlive the
  // parser. Size must not be 0.
  TKxTextParser(const void* ABuffer, uint32_t ASize, uint16_t ACodePage);
  ~TKxTextParser() override;

  // Binds the per-form routines; called at creation (again once the object is complete, so
  // that an override is reached) and by SetContentCodePage.
  virtual void SetCharacterSetType(TKxCharacterSetType Value);
  void AfterConstruction() override;
  // Frees the stream when the parser owns it.
  void BeforeDestruction() override;
  // Reinterprets the text from here on in another code page (same rules as at creation);
  // the cursor does not move.
  void SetContentCodePage(uint16_t ACodePage);

  bool GetEOF() const { return FEOF; }
  int64_t GetLineNr() const { return FLineNr; }
  int64_t GetColNr() const { return FColNr; }
  // Characters moved over; bytes for UTF-16 text.
  int64_t GetCharsRead() const { return FCharsRead; }
  // Bytes moved over.
  int64_t GetPosition() const { return FPosition; }
  const uint8_t* GetCurPos() const { return FCurPos; }
  TKxCharacterSetType CharacterSetType() const { return FCharacterSetType; }
  uint16_t CodePage() const { return FCodePage; }
  TStream* Stream() const { return FStream; }
  bool OwnsStream() const { return FOwnsStream; }
  int64_t StartPos() const { return FStartPos; }
  const uint8_t* Buffer() const { return FBuffer; }
  const uint8_t* BufferEnd() const { return FBufferEnd; }
  bool Chunked() const { return FChunked; }
  uint32_t ChunkCount() const { return FChunkCount; }
  uint32_t ChunkSize() const { return FChunkSize; }
  bool LastChunk() const { return FLastChunk; }

  // Back to the start of the text: line 1, counters 0, peek position and marks cleared.
  void First();
  // To the end of the text (reading the rest of a chunked stream); sets EOF.
  void Last();
  // One character, then on over control characters (below 32; the space is not one).
  // "Unexpected EOF" when already at the end.
  void NextChar();
  void SkipChars(int64_t Count);
  // Moves while not at the end and the current character compared with C holds. Comparisons
  // are unsigned; sopIn and sopNotIn do nothing here. An 8-bit C is taken in the text's code
  // page for one-byte text and in the system code page otherwise.
  void SkipWhile(TKxTextParserSkipOp Op, AnsiChar C);
  void SkipWhile(TKxTextParserSkipOp Op, WideChar W);
  // sopIn moves while the current character is in Chars, sopNotIn while it is not; other
  // operators do nothing. A UTF-16 or UTF-8 character is compared by its value, so the
  // members stand for U+0000..U+00FF and characters above 255 are never in the set.
  void SkipWhile(TKxTextParserSkipOp Op, const TKxCharSet& Chars);

  // The character operations return a pointer to the character: into the text when its form
  // matches the width asked for, otherwise to a scratch cell holding the converted character.
  // The pointer is valid until the next call. At the end of the text (and before the first
  // move, for the previous character) it designates a 0 character.
  // The current character, then one move ("Unexpected EOF" at the end).
  const AnsiChar* ReadCharA();
  const WideChar* ReadCharW();
  // The next character that is not a control character (for UTF-8 text: the next ASCII
  // character of 32 or more), without moving.
  const AnsiChar* PeekCharA();
  const WideChar* PeekCharW();
  const AnsiChar* PrevCharA();
  const WideChar* PrevCharW();
  const AnsiChar* CurrCharA();
  const WideChar* CurrCharW();
  // Up to Count characters from the current one on (fewer at the end), without moving.
  UnicodeString PeekString(int32_t Count) { return PeekStringW(Count); }
  AnsiString PeekStringA(int32_t Count);
  UnicodeString PeekStringW(int32_t Count);

  // The position of that type; null when it is not set. "Invalid TillPos specified!" for an
  // unknown type.
  const uint8_t* GetPos(TKxTextParserPosType PosType) const;
  // Marks the current position in mark 1, 2 or 3; "Invalid MarkType specified!" otherwise.
  void SetMark(TKxTextParserPosType PosType);
  void ClearMark(TKxTextParserPosType PosType);
  // Bytes from FromPos to TillPos; with tpPeekPos the current character is included.
  int64_t SelectedCnt(TKxTextParserPosType FromPos, TKxTextParserPosType TillPos);
  // The text between the positions; ClearMarks clears those of the two that are marks.
  AnsiString SelectedA(TKxTextParserPosType FromPos, TKxTextParserPosType TillPos,
                       bool ClearMarks = false);
  UnicodeString SelectedW(TKxTextParserPosType FromPos, TKxTextParserPosType TillPos,
                          bool ClearMarks = false);
  UnicodeString Selected(TKxTextParserPosType FromPos, TKxTextParserPosType TillPos,
                         bool ClearMarks = false) {
    return SelectedW(FromPos, TillPos, ClearMarks);
  }

  // EKxTextParserEOF when at the end.
  void CheckEOF() const;

private:
  friend struct detail::TTextParserOps;

  // The routines bound to the storage form.
  struct TOps {
    void (*Next)(TKxTextParser* Self);
    void (*SkipA)(TKxTextParser* Self, TKxTextParserSkipOp Op, uint8_t C);
    void (*SkipW)(TKxTextParser* Self, TKxTextParserSkipOp Op, uint16_t W);
    void (*SkipIn)(TKxTextParser* Self, bool In, const TKxCharSet& Chars);
  };
  // The cursor state a peek saves and restores.
  struct TCursor {
    bool AtEOF;
    int64_t LineNr, ColNr, CharsRead, Position;
  };

  void CheckCodePage(uint16_t ACodePage);
  TKxCharacterSetType FormOf(uint16_t ACodePage) const;
  // CurPos has reached BufferEnd: load the next chunk or set EOF.
  void EndReached();
  void LoadNextChunk();
  // Reads up to Count bytes at Dest, zero-filling what the stream does not give.
  void ReadChunk(uint8_t* Dest, uint32_t Count);
  void FreeBuffer();
  // Saves the cursor with its positions protected from a reload, and puts it back.
  TCursor SaveCursor();
  void RestoreCursor(const TCursor& Saved);
  // Runs Body, then puts the cursor back as it was, also when Body throws.
  template <class F>
  auto Peeking(F&& Body);
  // The character at Pos (the current or the previous position, which must lie before
  // BufferEnd), converted as the reads do. A UTF-8 sequence that runs past the buffer loads
  // the next chunk, which moves Pos with the others.
  const AnsiChar* CharAAt(const uint8_t* const& Pos);
  const WideChar* CharWAt(const uint8_t* const& Pos);
  // Pos, once the Length bytes there are in the buffer; "Unexpected EOF" when the text ends
  // before.
  const uint8_t* WholeSequence(const uint8_t* const& Pos, int Length);
  // Moves for a peek: at least one character, then over what the peek passes.
  void PeekMove();
  const uint8_t*& PosRef(TKxTextParserPosType PosType, const char* Message);
  WideChar Widen(uint8_t C);

  TStream* FStream = nullptr;
  bool FOwnsStream = false;
  TKxCharacterSetType FCharacterSetType = SBCS;
  uint16_t FCodePage = 0;
  int64_t FStartPos = 0;

  const uint8_t* FBuffer = nullptr;
  const uint8_t* FBufferEnd = nullptr;
  bool FOwnsBuffer = false;
  bool FChunked = false;
  uint32_t FChunkCount = 0;
  uint32_t FChunkSize = 0;
  bool FLastChunk = true;

  const uint8_t* FCurPos = nullptr;
  const uint8_t* FPrevPos = nullptr;
  bool FEOF = true;

  int64_t FLineNr = 1;
  int64_t FColNr = 0;
  int64_t FCharsRead = 0;
  int64_t FPosition = 0;

  const uint8_t* FPeekPos = nullptr;
  const uint8_t* FMarkPos1 = nullptr;
  const uint8_t* FMarkPos2 = nullptr;
  const uint8_t* FMarkPos3 = nullptr;
  // The previous position saved by a peek: kept across a reload like the others.
  const uint8_t* FHoldPos = nullptr;

  AnsiChar FCharA = 0;
  WideChar FCharW = 0;
  TOps FOps{};

  // One-byte text widened from the code page, filled on first use.
  WideChar FWiden[256] = {};
  bool FWidenReady = false;
};

} // namespace kx
