// SPDX-License-Identifier: MIT
// gzip, gunzip, zlib and deflate over the compression streams.
#include "Commands.h"

#include <kx/rtl/Files.h>
#include <kx/uKxZLib.h>

namespace kxtool {

namespace {

constexpr int32_t Chunk = 1 << 20;

int32_t WindowBits(TFraming F) {
  return F == TFraming::Gzip ? 31 : F == TFraming::Zlib ? 15 : -15;
}

const char* Suffix(TFraming F) {
  return F == TFraming::Gzip ? ".gz" : F == TFraming::Zlib ? ".zz" : ".deflate";
}

kx::TKxZLibCompressionLevel Level(int L) {
  if (L < 1 || L > 9) return kx::clDefault;
  return kx::TKxZLibCompressionLevel(kx::clLevel1 + (L - 1));
}

void CompressOne(const TCompressOptions& O, kx::TStream* Src, kx::TStream* Dest,
                 TProgress& Progress) {
  TOwned<kx::TKxZLibCompressionStream> Z(kx::TKxZLibCompressionStream::Create(
      Dest, Level(O.Level), WindowBits(O.Framing), 8, kx::zsDefault));
  std::unique_ptr<uint8_t[]> Buffer(new uint8_t[Chunk]);
  int64_t Done = 0;
  for (;;) {
    const int32_t Got = int32_t(Src->ReadUpTo(Buffer.get(), Chunk));
    if (Got > 0) Z->WriteBuffer(Buffer.get(), Got);
    Done += Got;
    Progress.Update(Done);
    if (Got < Chunk) break;
  }
  // Finishing writes the rest; a failure there leaves the object alive for a second Free.
  kx::TKxZLibCompressionStream* P = Z.release();
  try {
    P->Free();
  } catch (...) {
    P->Free();
    throw;
  }
}

// Decompresses every member (gzip) or the one stream (zlib, raw deflate) of Src; the status.
int DecompressAll(const TCompressOptions& O, kx::TStream* Src, kx::TStream* Dest,
                  TProgress& Progress, TToolIO& IO, const std::string& Label) {
  std::unique_ptr<uint8_t[]> Buffer(new uint8_t[Chunk]);
  for (;;) {
    TOwned<kx::TKxZLibDecompressionStream> Z(
        kx::TKxZLibDecompressionStream::Create(Src, WindowBits(O.Framing)));
    Z->OnProgress = [&](kx::TObject*) { Progress.Update(Src->Position()); };
    for (int32_t Got; (Got = Z->Read(Buffer.get(), Chunk)) > 0;)
      Dest->WriteBuffer(Buffer.get(), Got);
    if (!Z->StreamEnded()) throw TToolError{Label + ": unexpected end of file"};
    // gzip allows members one after the other; anything else after the data is reported.
    uint8_t Magic[2];
    const int64_t Next = Src->ReadUpTo(Magic, 2);
    if (Next == 0) return 0;
    if (O.Framing == TFraming::Gzip && Next == 2 && Magic[0] == 0x1f && Magic[1] == 0x8b) {
      Src->Seek(int64_t(-2), kx::soCurrent);
      continue;
    }
    WriteText(IO.Err, "kx: " + Label + ": decompression OK, trailing garbage ignored\n");
    return 2;
  }
}

// A seekable source: standard input is read into memory, since the decompression stream
// moves its source back to just after the data.
kx::TStream* Seekable(TInput& In, TOwned<kx::TMemoryStream>& Holder, bool Decompress) {
  if (!Decompress || !In.IsStdIn()) return In.Stream();
  Holder.reset(kx::TMemoryStream::Create());
  const std::string All = ReadAll(In.Stream());
  WriteText(Holder.get(), All);
  Holder->SetPosition(0);
  return Holder.get();
}

// One input: its compressed or decompressed form to standard output or beside it.
int CompressFile(const TCompressOptions& O, const std::string& Name, const std::string& Tool,
                 TToolIO& IO, bool& Replaced) {
  TInput In(Name, IO);
  std::string OutName;
  // zlib and deflate are filters; gzip replaces FILE by FILE.gz unless -c is given.
  const bool ToStdOut = O.ToStdOut || In.IsStdIn() || O.Framing != TFraming::Gzip;
  if (!ToStdOut) {
    const std::string Sfx = Suffix(O.Framing);
    if (!O.Decompress) {
      OutName = Name + Sfx;
    } else if (Name.size() > Sfx.size() &&
               Name.compare(Name.size() - Sfx.size(), Sfx.size(), Sfx) == 0) {
      OutName = Name.substr(0, Name.size() - Sfx.size());
    } else {
      throw TToolError{Name + ": unknown suffix -- ignored"};
    }
    if (kx::FileExists(OutName)) throw TToolError{OutName + " already exists"};
  }
  TOwned<kx::TMemoryStream> Holder;
  kx::TStream* Src = Seekable(In, Holder, O.Decompress);
  const int64_t Total = In.IsStdIn() ? -1 : Src->Size();
  int Result = 0;
  TOutput Out(OutName, IO);
  TProgress Progress(IO, "kx " + Tool + " " + In.Name(), Total);
  if (O.Decompress)
    Result = DecompressAll(O, Src, Out.Stream(), Progress, IO, In.Name());
  else
    CompressOne(O, Src, Out.Stream(), Progress);
  Out.Commit();
  Replaced = !ToStdOut;
  return Result;
}

} // namespace

int Compress(const TCompressOptions& O, TToolIO& IO) {
  const std::vector<std::string> Names = O.Files.empty() ? std::vector<std::string>{"-"} : O.Files;
  const std::string Tool = O.Framing == TFraming::Gzip
                               ? (O.Decompress ? "gunzip" : "gzip")
                               : (O.Framing == TFraming::Zlib ? "zlib" : "deflate");
  int Status = 0;
  for (const std::string& Name : Names) {
    bool Replaced = false;
    Status = std::max(Status, CompressFile(O, Name, Tool, IO, Replaced));
    // The input goes once its replacement is complete, as gzip's does.
    if (Replaced && !O.Keep) kx::DeleteFile(Name);
  }
  return Status;
}

} // namespace kxtool
