// SPDX-License-Identifier: MIT
// The MIME type of a file by its name: the system's tables, then the built-in table.
#include <kx/rtl/Files.h>
#include <kx/rtl/Streams.h>
#include <kx/rtl/SysUtils.h>
#include <kx/sysutils/MimeTypes.h>

#include "platform/Environment.h"
#include "platform/Registry.h"

#include <mutex>
#include <vector>

namespace kx {

namespace {

struct TMimeRow {
  const char* Ext;
  const char* Mime;
};

// In the order they are tried. The spreadsheet extensions appear twice; the second rows, with
// the newer type, are never reached.
constexpr TMimeRow MimeTable[] = {
    {".3dm", "x-world/x-3dmf"},
    {".3dmf", "x-world/x-3dmf"},
    {".a", "application/octet-stream"},
    {".aab", "application/x-authorware-bin"},
    {".aam", "application/x-authorware-map"},
    {".aas", "application/x-authorware-seg"},
    {".abc", "text/vnd.abc"},
    {".acg", "text/html"},
    {".afl", "video/animaflex"},
    {".aif", "audio/aiff"},
    {".aim", "application/x-aim"},
    {".aip", "text/x-audiosoft-intra"},
    {".ani", "application/x-navi-animation"},
    {".aos", "application/x-nokia-9000-communicator-add-on-software"},
    {".aps", "application/mime"},
    {".arc", "application/octet-stream"},
    {".arj", "application/octet-stream"},
    {".art", "image/x-jg"},
    {".asf", "video/x-ms-asf"},
    {".asm", "text/x-asm"},
    {".asp", "text/asp"},
    {".asx", "video/x-ms-asf"},
    {".avi", "video/avi"},
    {".avs", "video/avs-video"},
    {".bcpio", "application/x-bcpio"},
    {".bin", "application/octet-stream"},
    {".bmp", "image/bmp"},
    {".boo", "application/book"},
    {".boz", "application/x-bzip2"},
    {".bsh", "application/x-bsh"},
    {".b", "application/x-bzip"},
    {".bz2", "application/x-bzip2"},
    {".c", "text/plain"},
    {".c++", "text/plain"},
    {".cat", "application/vnd.ms-pki.seccat"},
    {".cca", "application/clariscad"},
    {".cco", "application/x-cocoa"},
    {".cdf", "application/cdf"},
    {".cer", "application/pkix-cert"},
    {".cha", "application/x-chat"},
    {".class", "application/java"},
    {".com", "application/octet-stream"},
    {".con", "text/plain"},
    {".cpi", "text/html"},
    {".cpp", "text/x-c"},
    {".cpt", "application/mac-compactpro"},
    {".crl", "application/pkcs-crl"},
    {".crt", "application/pkix-cert"},
    {".csh", "application/x-csh"},
    {".css", "text/css"},
    {".cxx", "text/plain"},
    {".dcr", "application/x-director"},
    {".deepv", "application/x-deepv"},
    {".def", "text/plain"},
    {".der", "application/x-x509-ca-cert"},
    {".dif", "video/x-dv"},
    {".dir", "application/x-director"},
    {".d", "video/dl"},
    {".doc", "application/msword"},
    {".dot", "application/msword"},
    {".drw", "application/drafting"},
    {".dum", "application/octet-stream"},
    {".dvi", "application/x-dvi"},
    {".dwf", "model/vnd.dwf"},
    {".dwg", "image/vnd.dwg"},
    {".dxf", "image/vnd.dwg"},
    {".dxr", "application/x-director"},
    {".e", "text/x-script.elisp"},
    {".elc", "application/x-elc"},
    {".env", "application/x-envoy"},
    {".eps", "application/postscript"},
    {".etx", "text/x-setext"},
    {".evy", "application/envoy"},
    {".exe", "application/octet-stream"},
    {".f", "text/plain"},
    {".f77", "text/x-fortran"},
    {".f90", "text/plain"},
    {".fdf", "application/vnd.fdf"},
    {".fif", "image/fif"},
    {".fli", "video/fli"},
    {".flo", "image/florian"},
    {".flx", "text/vnd.fmi.flexstor"},
    {".fmf", "video/x-atomic3d-feature"},
    {".for", "text/plain"},
    {".fpx", "image/vnd.fpx"},
    {".frl", "application/freeloader"},
    {".fun", "audio/make"},
    {".g", "text/plain"},
    {".gif", "image/gif"},
    {".gsd", "audio/x-gsm"},
    {".gsm", "audio/x-gsm"},
    {".gsp", "application/x-gsp"},
    {".gss", "application/x-gss"},
    {".gta", "application/x-gtar"},
    {".gzi", "application/x-gzip"},
    {".h", "text/plain"},
    {".hdf", "application/x-hdf"},
    {".hel", "application/x-helpfile"},
    {".hgl", "application/vnd.hp-hpgl"},
    {".hlb", "text/x-script"},
    {".hlp", "application/hlp"},
    {".hpg", "application/vnd.hp-hpgl"},
    {".hqx", "application/binhex"},
    {".hta", "application/hta"},
    {".htc", "text/x-component"},
    {".htm", "text/html"},
    {".htmls", "text/html"},
    {".htt", "text/webviewhtml"},
    {".htx", "text/html"},
    {".ice", "x-conference/x-cooltalk"},
    {".ico", "image/x-icon"},
    {".idc", "text/plain"},
    {".ief", "image/ief"},
    {".ige", "model/iges"},
    {".igs", "model/iges"},
    {".ima", "application/x-ima"},
    {".inf", "application/inf"},
    {".ins", "application/x-internett-signup"},
    {".i", "application/x-iphone"},
    {".isu", "video/x-isvideo"},
    {".ivr", "i-world/i-vrml"},
    {".ivy", "application/x-livescreen"},
    {".jam", "audio/x-jam"},
    {".jav", "text/plain"},
    {".jcm", "application/x-java-commerce"},
    {".jfi", "image/pjpeg"},
    {".jpe", "image/pjpeg"},
    {".jpg", "image/jpeg"},
    {".jps", "image/x-jps"},
    {".j", "application/x-javascript"},
    {".jut", "image/jutvision"},
    {".kar", "audio/midi"},
    {".ksh", "application/x-ksh"},
    {".l", "text/x-script.lisp"},
    {".lam", "audio/x-liveaudio"},
    {".latex", "application/x-latex"},
    {".lha", "application/octet-stream"},
    {".lhx", "application/octet-stream"},
    {".lis", "text/plain"},
    {".lma", "audio/nspaudio"},
    {".log", "text/plain"},
    {".lsp", "application/x-lisp"},
    {".lst", "text/plain"},
    {".lsx", "text/x-la-asf"},
    {".ltx", "application/x-latex"},
    {".lzh", "application/octet-stream"},
    {".lzx", "application/octet-stream"},
    {".m", "text/x-m"},
    {".m1v", "video/mpeg"},
    {".m2a", "audio/mpeg"},
    {".m2v", "video/mpeg"},
    {".m3u", "audio/x-mpequrl"},
    {".man", "application/x-troff-man"},
    {".map", "application/x-navimap"},
    {".mar", "text/plain"},
    {".mbd", "application/mbedlet"},
    {".mc$", "application/x-magic-cap-package-1.0"},
    {".mcd", "application/mcad"},
    {".mcf", "text/mcf"},
    {".mcp", "application/netmc"},
    {".mht", "message/rfc822"},
    {".mhtml", "message/rfc822"},
    {".mid", "audio/midi"},
    {".mif", "application/x-mif"},
    {".mim", "www/mime"},
    {".mjf", "audio/x-vnd.audioexplosion.mjuicemediafile"},
    {".mjp", "video/x-motion-jpeg"},
    {".mme", "application/base64"},
    {".mod", "audio/mod"},
    {".moo", "video/quicktime"},
    {".mov", "video/quicktime"},
    {".movie", "video/x-sgi-movie"},
    {".mp2", "audio/mpeg"},
    {".mp3", "audio/mpeg3"},
    {".mpa", "audio/mpeg"},
    {".mpc", "application/x-project"},
    {".mpe", "video/mpeg"},
    {".mpg", "video/mpeg"},
    {".mpp", "application/vnd.ms-project"},
    {".mpt", "application/x-project"},
    {".mpv", "application/x-project"},
    {".mpx", "application/x-project"},
    {".mrc", "application/marc"},
    {".mzz", "application/x-vnd.audioexplosion.mzz"},
    {".nap", "image/naplps"},
    {".naplp", "image/naplps"},
    {".n", "application/x-troff"},
    {".ncm", "application/vnd.nokia.configuration-message"},
    {".nif", "image/x-niff"},
    {".nix", "application/x-mix-transfer"},
    {".nsc", "application/x-conference"},
    {".nvd", "application/x-navidoc"},
    {".o", "application/octet-stream"},
    {".oda", "application/oda"},
    {".omc", "application/x-omc"},
    {".p", "text/x-pascal"},
    {".p10", "application/pkcs10"},
    {".p12", "application/pkcs-12"},
    {".p7a", "application/x-pkcs7-signature"},
    {".p7c", "application/pkcs7-mime"},
    {".p7m", "application/pkcs7-mime"},
    {".p7r", "application/x-pkcs7-certreqresp"},
    {".p7s", "application/pkcs7-signature"},
    {".par", "text/plain-bas"},
    {".pas", "text/pascal"},
    {".pbm", "image/x-portable-bitmap"},
    {".pcl", "application/vnd.hp-pcl"},
    {".pct", "image/x-pict"},
    {".pcx", "image/x-pcx"},
    {".pdb", "chemical/x-pdb"},
    {".pdf", "application/pdf"},
    {".pfunk", "audio/make"},
    {".pgm", "image/x-portable-graymap"},
    {".pic", "image/pict"},
    {".pkg", "application/x-newton-compatible-pkg"},
    {".pko", "application/vnd.ms-pki.pko"},
    {".plx", "application/x-pixclscript"},
    {".pm4", "application/x-pagemaker"},
    {".pm5", "application/x-pagemaker"},
    {".png", "image/png"},
    {".pnm", "image/x-portable-anymap"},
    {".pot", "application/vnd.ms-powerpoint"},
    {".pov", "model/x-pov"},
    {".ppa", "application/vnd.ms-powerpoint"},
    {".ppm", "image/x-portable-pixmap"},
    {".pps", "application/vnd.ms-powerpoint"},
    {".ppt", "application/vnd.ms-powerpoint"},
    {".ppz", "application/mspowerpoint"},
    {".pre", "application/x-freelance"},
    {".prt", "application/pro_eng"},
    {".psd", "application/octet-stream"},
    {".pvu", "paleovu/x-pv"},
    {".pwz", "application/vnd.ms-powerpoint"},
    {".pyc", "application/x-bytecode.python"},
    {".qcp", "audio/vnd.qcelp"},
    {".qd3", "x-world/x-3dmf"},
    {".qif", "image/x-quicktime"},
    {".q", "video/quicktime"},
    {".qtc", "video/x-qtc"},
    {".qti", "image/x-quicktime"},
    {".r", "text/x-script.rexx"},
    {".ram", "audio/x-pn-realaudio"},
    {".ras", "image/cmu-raster"},
    {".rex", "text/x-script.rexx"},
    {".rgb", "image/x-rgb"},
    {".rmi", "audio/mid"},
    {".rmm", "audio/x-pn-realaudio"},
    {".rmp", "audio/x-pn-realaudio-plugin"},
    {".rng", "application/ringing-tones"},
    {".rnx", "application/vnd.rn-realplayer"},
    {".rof", "application/x-troff"},
    {".rpm", "audio/x-pn-realaudio-plugin"},
    {".rtf", "application/rtf"},
    {".rtx", "text/richtext"},
    {".s", "text/x-asm"},
    {".s3m", "audio/s3m"},
    {".savem", "application/octet-stream"},
    {".sbk", "application/x-tbook"},
    {".scm", "text/x-script.scheme"},
    {".sdm", "text/plain"},
    {".sdp", "application/sdp"},
    {".sdr", "application/sounder"},
    {".sea", "application/sea"},
    {".set", "application/set"},
    {".sgm", "text/sgml"},
    {".sha", "application/x-sh"},
    {".shtml", "text/html"},
    {".sid", "audio/x-psid"},
    {".sit", "application/x-stuffit"},
    {".skd", "application/x-koan"},
    {".skm", "application/x-koan"},
    {".skp", "application/x-koan"},
    {".skt", "application/x-koan"},
    {".smi", "application/smil"},
    {".snd", "audio/basic"},
    {".sol", "application/solids"},
    {".spc", "text/x-speech"},
    {".spl", "application/futuresplash"},
    {".spr", "application/x-sprite"},
    {".sprit", "application/x-sprite"},
    {".src", "application/x-wais-source"},
    {".ssi", "text/x-server-parsed-html"},
    {".ssm", "application/streamingmedia"},
    {".sst", "application/vnd.ms-pki.certstore"},
    {".ste", "application/step"},
    {".stl", "application/sla"},
    {".stp", "application/step"},
    {".sv4cpio", "application/x-sv4cpio"},
    {".sv4cr", "application/x-sv4crc"},
    {".svf", "image/vnd.dwg"},
    {".svr", "application/x-world"},
    {".swf", "application/x-shockwave-flash"},
    {".t", "application/x-troff"},
    {".tal", "text/x-speech"},
    {".tar", "application/x-tar"},
    {".tbk", "application/toolbook"},
    {".tcl", "application/x-tcl"},
    {".tcs", "text/x-script.tcsh"},
    {".tex", "application/x-tex"},
    {".texinfo", "application/x-texinfo"},
    {".tgz", "application/x-compressed"},
    {".tif", "image/tiff"},
    {".tsi", "audio/tsp-audio"},
    {".tsp", "application/dsptype"},
    {".tsv", "text/tab-separated-values"},
    {".turbo", "image/florian"},
    {".txt", "text/plain"},
    {".uil", "text/x-uil"},
    {".uni", "text/uri-list"},
    {".unv", "application/i-deas"},
    {".uri", "text/uri-list"},
    {".ustar", "application/x-ustar"},
    {".u", "application/octet-stream"},
    {".uue", "text/x-uuencode"},
    {".vcd", "application/x-cdlink"},
    {".vcs", "text/x-vcalendar"},
    {".vda", "application/vda"},
    {".vdo", "video/vdo"},
    {".vew", "application/groupwise"},
    {".viv", "video/vivo"},
    {".vmd", "application/vocaltec-media-desc"},
    {".vmf", "application/vocaltec-media-file"},
    {".voc", "audio/voc"},
    {".vos", "video/vosaic"},
    {".vox", "audio/voxware"},
    {".vqe", "audio/x-twinvq-plugin"},
    {".vqf", "audio/x-twinvq"},
    {".vql", "audio/x-twinvq-plugin"},
    {".vrm", "x-world/x-vrml"},
    {".vrt", "x-world/x-vrt"},
    {".vsd", "application/x-visio"},
    {".vst", "application/x-visio"},
    {".vsw", "application/x-visio"},
    {".w60", "application/wordperfect6.0"},
    {".w61", "application/wordperfect6.1"},
    {".w6w", "application/msword"},
    {".wav", "audio/wav"},
    {".wb1", "application/x-qpro"},
    {".wbm", "image/vnd.wap.wbmp"},
    {".web", "application/vnd.xara"},
    {".wiz", "application/msword"},
    {".wk1", "application/x-123"},
    {".wmf", "windows/metafile"},
    {".wml", "text/vnd.wap.wml"},
    {".wmlsc", "application/vnd.wap.wmlscriptc"},
    {".wor", "application/wordperfect"},
    {".w", "application/wordperfect"},
    {".wp5", "application/wordperfect"},
    {".wp6", "application/wordperfect"},
    {".wpd", "application/wordperfect"},
    {".wq1", "application/x-lotus"},
    {".wri", "application/mswrite"},
    {".wrl", "model/vrml"},
    {".wrz", "model/vrml"},
    {".wsc", "text/scriplet"},
    {".wsr", "application/x-wais-source"},
    {".wtk", "application/x-wintalk"},
    {".xbm", "image/xbm"},
    {".xdr", "video/x-amt-demorun"},
    {".xgz", "xgl/drawing"},
    {".xif", "image/vnd.xiff"},
    {".x", "application/x-excel"},
    {".xla", "application/x-excel"},
    {".xlb", "application/x-excel"},
    {".xlc", "application/x-excel"},
    {".xld", "application/x-excel"},
    {".xlk", "application/x-excel"},
    {".xll", "application/x-excel"},
    {".xlm", "application/x-excel"},
    {".xls", "application/x-excel"},
    {".xlt", "application/x-excel"},
    {".xlv", "application/x-excel"},
    {".xlw", "application/x-excel"},
    {".xla", "application/vnd.ms-excel"},
    {".xlb", "application/vnd.ms-excel"},
    {".xlc", "application/vnd.ms-excel"},
    {".xld", "application/vnd.ms-excel"},
    {".xlk", "application/vnd.ms-excel"},
    {".xll", "application/vnd.ms-excel"},
    {".xlm", "application/vnd.ms-excel"},
    {".xls", "application/vnd.ms-excel"},
    {".xlt", "application/vnd.ms-excel"},
    {".xlv", "application/vnd.ms-excel"},
    {".xml", "text/xml"},
    {".xmz", "xgl/movie"},
    {".xpi", "application/x-xpinstall"},
    {".xpm", "image/xpm"},
    {".", "application/octet-stream"},
    {".xsr", "video/x-amt-showrun"},
    {".xwd", "image/x-xwd"},
    {".xyz", "chemical/x-pdb"},
    {".z", "application/x-compressed"},
    {".zip", "application/zip"},
    {".zoo", "application/octet-stream"},
    {".zsh", "text/x-script.zsh"},
};

std::mutex MimeTypesLock;
AnsiString& MimeTypesOverride() {
  static AnsiString Name;
  return Name;
}

AnsiString MimeTypesFileName() {
  std::lock_guard<std::mutex> Guard(MimeTypesLock);
  return MimeTypesOverride().empty() ? AnsiString("/etc/mime.types") : MimeTypesOverride();
}

// A whole text file, or nothing when it cannot be read; files past a few MiB are cut off.
AnsiString ReadSmallFile(const AnsiString& FileName) {
  TFileStream* F = nullptr;
  try {
    F = TFileStream::Create(FileName, uint16_t(fmOpenRead | fmShareDenyNone));
  } catch (const Exception&) {
    return AnsiString();
  }
  AnsiString Text;
  char Buf[65536];
  try {
    for (int64_t N; Text.size() < (8u << 20) && (N = F->ReadUpTo(Buf, sizeof Buf)) > 0;)
      Text.append(Buf, size_t(N));
  } catch (const Exception&) {
    Text.clear();
  }
  F->Free();
  return Text;
}

// Calls Line for each line of Text (without its line break).
template <class F>
void ForEachLine(const AnsiString& Text, F&& Line) {
  size_t Start = 0;
  while (Start < Text.size()) {
    size_t End = Text.find('\n', Start);
    if (End == AnsiString::npos) End = Text.size();
    size_t Stop = End;
    if (Stop > Start && Text[Stop - 1] == '\r') --Stop;
    if (!Line(std::string_view(Text).substr(Start, Stop - Start))) return;
    Start = End + 1;
  }
}

bool IsBlank(char C) {
  return C == ' ' || C == '\t';
}

// mime.types: "type ext ext ..." per line, '#' comments.
AnsiString LookUpMimeTypesFile(const AnsiString& Text, const AnsiString& ExtNoDot) {
  AnsiString Found;
  ForEachLine(Text, [&](std::string_view L) {
    size_t I = 0;
    while (I < L.size() && IsBlank(L[I])) ++I;
    if (I >= L.size() || L[I] == '#') return true;
    size_t E = I;
    while (E < L.size() && !IsBlank(L[E])) ++E;
    const std::string_view Type = L.substr(I, E - I);
    if (Type.find('/') == std::string_view::npos) return true;
    for (I = E; I < L.size();) {
      while (I < L.size() && IsBlank(L[I])) ++I;
      E = I;
      while (E < L.size() && !IsBlank(L[E])) ++E;
      if (E > I && SameText(AnsiString(L.substr(I, E - I)), ExtNoDot)) {
        Found = AnsiString(Type);
        return false;
      }
      I = E;
    }
    return true;
  });
  return Found;
}

// globs2: "weight:type:pattern[:flags]" per line, '#' comments. The heaviest "*<ext>" pattern
// wins, the first of equal weight; "cs" in the flags makes the pattern case-sensitive.
AnsiString LookUpGlobs2(const AnsiString& Text, const AnsiString& Ext, const AnsiString& RawExt) {
  AnsiString Found;
  int64_t Best = -1;
  ForEachLine(Text, [&](std::string_view L) {
    if (L.empty() || L[0] == '#') return true;
    const size_t C1 = L.find(':');
    const size_t C2 = C1 == std::string_view::npos ? C1 : L.find(':', C1 + 1);
    if (C2 == std::string_view::npos) return true;
    int64_t Weight = 0;
    if (!TryStrToInt64(AnsiString(L.substr(0, C1)), Weight) || Weight < 0) return true;
    const std::string_view Type = L.substr(C1 + 1, C2 - C1 - 1);
    std::string_view Pattern = L.substr(C2 + 1), Flags;
    const size_t C3 = Pattern.find(':');
    if (C3 != std::string_view::npos) {
      Flags = Pattern.substr(C3 + 1);
      Pattern = Pattern.substr(0, C3);
    }
    if (Type.empty() || Pattern.size() < 2 || Pattern[0] != '*') return true;
    const AnsiString Tail(Pattern.substr(1));
    // Only plain extensions: a pattern with more wildcards is not an extension.
    if (Tail.find_first_of("*?[") != AnsiString::npos) return true;
    const bool CaseSensitive = Flags.find("cs") != std::string_view::npos;
    const bool Match = CaseSensitive ? Tail == RawExt : SameText(Tail, Ext);
    if (Match && Weight > Best) {
      Best = Weight;
      Found = AnsiString(Type);
    }
    return true;
  });
  return Found;
}

// The folders of shared-mime-info, the user's first.
std::vector<AnsiString> MimeDataFolders() {
  std::vector<AnsiString> Folders;
  AnsiString V;
  if (platform::GetEnvironmentVariable("XDG_DATA_HOME", V) && !V.empty() && V[0] == '/')
    Folders.push_back(V);
  else if (platform::GetEnvironmentVariable("HOME", V) && !V.empty())
    Folders.push_back(V + "/.local/share");
  if (!platform::GetEnvironmentVariable("XDG_DATA_DIRS", V) || V.empty())
    V = "/usr/local/share:/usr/share";
  size_t Start = 0;
  while (Start <= V.size()) {
    size_t End = V.find(':', Start);
    if (End == AnsiString::npos) End = V.size();
    if (End > Start && V[Start] == '/') Folders.push_back(V.substr(Start, End - Start));
    Start = End + 1;
  }
  return Folders;
}

// The registry's two sources. False when the platform has no registry.
bool LookUpRegistry(const AnsiString& Ext, AnsiString& Result) {
  platform::RegKey Key = nullptr;
  const uint32_t Rc =
      platform::RegOpenKey(platform::HKEY_CLASSES_ROOT_, "\\" + Ext, platform::KEY_READ_, Key);
  if (Rc == platform::ERROR_NOT_SUPPORTED_) return false;
  if (Rc == 0) {
    platform::RegQueryString(Key, "Content Type", Result);
    platform::RegCloseKey(Key);
  }
  if (!Result.empty()) return true;
  const AnsiString Database = "\\MIME\\Database\\Content Type";
  std::vector<AnsiString> Names;
  if (platform::RegOpenKey(platform::HKEY_CLASSES_ROOT_, Database, platform::KEY_READ_, Key) == 0) {
    platform::RegEnumSubKeys(Key, Names);
    platform::RegCloseKey(Key);
  }
  for (const AnsiString& Name : Names) {
    if (platform::RegOpenKey(platform::HKEY_CLASSES_ROOT_, Database + "\\" + Name,
                             platform::KEY_READ_, Key) != 0)
      continue;
    AnsiString Extension;
    const bool Has = platform::RegQueryString(Key, "Extension", Extension);
    platform::RegCloseKey(Key);
    if (Has && AnsiSameText(Extension, Ext)) {
      Result = Name;
      break;
    }
  }
  return true;
}

// Linux's counterparts of the two registry sources.
AnsiString LookUpLinuxDatabases(const AnsiString& Ext, const AnsiString& RawExt) {
  if (Ext.size() < 2) return AnsiString();
  AnsiString Result = LookUpMimeTypesFile(ReadSmallFile(MimeTypesFileName()), Ext.substr(1));
  for (const AnsiString& Folder : MimeDataFolders()) {
    if (!Result.empty()) break;
    Result = LookUpGlobs2(ReadSmallFile(Folder + "/mime/globs2"), Ext, RawExt);
  }
  return Result;
}

} // namespace

AnsiString KxGetBuiltInMimeType(const AnsiString& Ext) {
  for (const TMimeRow& Row : MimeTable)
    if (SameText(Row.Ext, Ext)) return Row.Mime;
  return "application/" + Copy(Ext, 2, INT64_MAX);
}

AnsiString KxMimeTypeFromMimeTypesText(const AnsiString& Text, const AnsiString& Ext) {
  if (Ext.size() < 2) return AnsiString();
  return LookUpMimeTypesFile(Text, LowerCase(Ext).substr(1));
}

AnsiString KxMimeTypeFromGlobs2Text(const AnsiString& Text, const AnsiString& Ext) {
  if (Ext.size() < 2) return AnsiString();
  return LookUpGlobs2(Text, LowerCase(Ext), Ext);
}

AnsiString KxGetFileMimeType(const AnsiString& FileName) {
  const AnsiString RawExt = ExtractFileExt(FileName);
  const AnsiString Ext = LowerCase(RawExt);
  AnsiString Result;
  if (!LookUpRegistry(Ext, Result)) Result = LookUpLinuxDatabases(Ext, RawExt);
  return Result.empty() ? KxGetBuiltInMimeType(Ext) : Result;
}

void KxSetMimeTypesFile(const AnsiString& FileName) {
  std::lock_guard<std::mutex> Guard(MimeTypesLock);
  MimeTypesOverride() = FileName;
}

} // namespace kx
