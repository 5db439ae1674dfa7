#pragma once

#include "Classification/ContentCategory.hpp"

#include <array>
#include <string_view>

// The classifier's built-in data, as written by hand. ContentTables turns it into hashed
// tables once per process; nothing here is read per node.
namespace tarnwick::ContentTableData {

// Extensions are space-separated, lower-case. An empty format means none: the plain
// lists of a category come before its named formats, so a format wins over a plain entry.
struct ExtensionRow {
    ContentCategory category;
    std::string_view extensions;
    std::string_view format;
};

// Every package rule is strong and names its format.
struct PackageRow {
    ContentCategory category;
    std::string_view extensions;
    std::string_view format;
};

enum class RuleStrength : bool { weak = false, strong = true };

// Folder names are separated by "|", since names contain spaces. Empty texts mean none.
struct FolderRow {
    enum Source : bool { listedNames, agentPlaces };
    Source source;
    std::string_view names;
    ContentCategory category;
    RuleStrength strength;
    std::string_view format;
    std::string_view parent;
    bool topLevelOnly;
};

struct SpecialNameRow {
    std::string_view name;
    ContentCategory category;
    std::string_view format;
};

inline constexpr ExtensionRow extensionRows[] = {
    { ContentCategory::video, "mp4 m4v mov qt avi mkv webm wmv flv f4v mpg mpeg mpe m2v m2ts mts vob 3gp 3g2 ogv mxf dv divx rmvb hevc h264 h265 insv lrv braw r3d ari crm", {} },
    { ContentCategory::video, "fcpxml fcpxmld", "Final Cut Pro XML" },
    { ContentCategory::video, "motn", "Motion project" },
    { ContentCategory::video, "moti", "Motion title" },
    { ContentCategory::video, "moef", "Motion effect" },
    { ContentCategory::video, "prproj", "Premiere Pro project" },
    { ContentCategory::video, "aep aepx", "After Effects project" },
    { ContentCategory::video, "drp", "DaVinci Resolve project" },
    { ContentCategory::video, "dra", "DaVinci Resolve archive" },
    { ContentCategory::video, "tscproj", "Camtasia project" },
    { ContentCategory::video, "trec", "Camtasia recording" },
    { ContentCategory::video, "veg", "VEGAS project" },
    { ContentCategory::video, "wlmp", "Movie Maker project" },
    { ContentCategory::photos, "jpg jpeg jpe jfif png gif heic heif hif tif tiff bmp webp avif jxl jp2 ico icns svg eps tga exr hdr dds", {} },
    { ContentCategory::photos, "raw dng cr2 cr3 crw nef nrw arw srf sr2 raf orf rw2 rwl pef srw x3f 3fr fff iiq erf kdc mos mrw", {} },
    { ContentCategory::photos, "obj fbx stl glb gltf usd usda usdc 3ds dae abc", {} },
    { ContentCategory::photos, "psd psb", "Photoshop document" },
    { ContentCategory::photos, "ai", "Illustrator document" },
    { ContentCategory::photos, "sketch", "Sketch document" },
    { ContentCategory::photos, "fig", "Figma file" },
    { ContentCategory::photos, "xd", "Adobe XD document" },
    { ContentCategory::photos, "afphoto", "Affinity Photo document" },
    { ContentCategory::photos, "afdesign", "Affinity Designer document" },
    { ContentCategory::photos, "pxd", "Pixelmator Pro document" },
    { ContentCategory::photos, "pxm", "Pixelmator document" },
    { ContentCategory::photos, "xcf", "GIMP image" },
    { ContentCategory::photos, "kra", "Krita document" },
    { ContentCategory::photos, "procreate", "Procreate artwork" },
    { ContentCategory::photos, "clip", "Clip Studio Paint document" },
    { ContentCategory::photos, "lrcat", "Lightroom Classic catalog" },
    { ContentCategory::photos, "xmp", "Photo edit settings" },
    { ContentCategory::photos, "usdz", "USDZ 3D model" },
    { ContentCategory::photos, "blend", "Blender scene" },
    { ContentCategory::photos, "c4d", "Cinema 4D scene" },
    { ContentCategory::photos, "ma mb", "Maya scene" },
    { ContentCategory::photos, "max", "3ds Max scene" },
    { ContentCategory::photos, "skp", "SketchUp model" },
    { ContentCategory::photos, "reality", "Reality Composer scene" },
    { ContentCategory::music, "mp3 m4a m4b m4p m4r aac wav wave aif aiff aifc caf flac alac ogg oga opus wma mid midi amr ape dsf dff wv mka ac3 eac3 dts", {} },
    { ContentCategory::music, "sf2 sf3 sfz nki nkm nkx nkc ncw nkr exs aupreset fxp fxb", {} },
    { ContentCategory::music, "als", "Ableton Live set" },
    { ContentCategory::music, "alp", "Ableton Live pack" },
    { ContentCategory::music, "adg", "Ableton Live preset" },
    { ContentCategory::music, "ptx ptf", "Pro Tools session" },
    { ContentCategory::music, "cpr", "Cubase project" },
    { ContentCategory::music, "flp", "FL Studio project" },
    { ContentCategory::music, "rpp", "Reaper project" },
    { ContentCategory::music, "song", "Studio One song" },
    { ContentCategory::music, "aup3", "Audacity project" },
    { ContentCategory::music, "mscz", "MuseScore score" },
    { ContentCategory::music, "sib", "Sibelius score" },
    { ContentCategory::music, "dorico", "Dorico project" },
    { ContentCategory::documents, "pdf doc docx docm dot dotx rtf txt text md markdown odt ods odp xls xlsx xlsm xlsb ppt pptx pps ppsx csv tsv tex bib ics vcf mobi azw azw3 djvu xps oxps", {} },
    { ContentCategory::documents, "pages", "Pages document" },
    { ContentCategory::documents, "numbers", "Numbers spreadsheet" },
    { ContentCategory::documents, "key", "Keynote presentation" },
    { ContentCategory::documents, "epub", "EPUB book" },
    { ContentCategory::documents, "ibooks", "Apple Books book" },
    { ContentCategory::documents, "emlx", "Mail message" },
    { ContentCategory::documents, "eml", "Email message" },
    { ContentCategory::documents, "mbox", "Mailbox" },
    { ContentCategory::documents, "msg", "Outlook message" },
    { ContentCategory::documents, "pst", "Outlook data file" },
    { ContentCategory::documents, "olm", "Outlook archive" },
    { ContentCategory::documents, "indd idml", "InDesign document" },
    { ContentCategory::documents, "afpub", "Affinity Publisher document" },
    { ContentCategory::documents, "one", "OneNote notebook" },
    { ContentCategory::documents, "scriv", "Scrivener project" },
    { ContentCategory::documents, "ulysses", "Ulysses sheet" },
    { ContentCategory::documents, "goodnotes", "GoodNotes notebook" },
    { ContentCategory::documents, "notability", "Notability note" },
    { ContentCategory::apps, "dylib", {} },
    { ContentCategory::apps, "ipa", "iOS app" },
    { ContentCategory::developer, "swift m mm h hh hpp hxx c cc cpp cxx cs java kt kts scala groovy go rs py pyi pyc pyo pyd rb php pl pm lua r dart ex erl hrl hs ml mli clj cljs el zig nim v", {} },
    { ContentCategory::developer, "js mjs cjs ts cts tsx jsx vue svelte astro css scss sass less styl html htm xhtml json jsonc json5 yaml yml toml ini cfg graphql gql proto thrift sql", {} },
    { ContentCategory::developer, "sh bash zsh fish ps1 bat cmd make mk cmake ninja gradle bazel bzl nix", {} },
    { ContentCategory::developer, "o a so lib class jar war aar wasm node pch pcm gch swiftmodule swiftdoc swiftinterface swiftsourceinfo tbd modulemap map pack idx rev gem whl egg lockb", {} },
    { ContentCategory::developer, "ipynb", "Jupyter notebook" },
    { ContentCategory::developer, "xcconfig", "Xcode configuration" },
    { ContentCategory::developer, "pbxproj", "Xcode project file" },
    { ContentCategory::ai, "gguf ggml ggmf ggjt safetensors ckpt pt pth onnx ort tflite mlmodel keras h5 llamafile mlx npz", {} },
    { ContentCategory::ai, "gguf", "GGUF model" },
    { ContentCategory::ai, "safetensors", "Model weights" },
    { ContentCategory::ai, "mlmodel", "Core ML model" },
    { ContentCategory::ai, "onnx", "ONNX model" },
    { ContentCategory::virtualMachines, "vmdk", "VMware virtual disk" },
    { ContentCategory::virtualMachines, "vdi", "VirtualBox virtual disk" },
    { ContentCategory::virtualMachines, "vhd vhdx", "Virtual hard disk" },
    { ContentCategory::virtualMachines, "qcow2", "QEMU virtual disk" },
    { ContentCategory::virtualMachines, "nvram", "Virtual machine NVRAM" },
    { ContentCategory::virtualMachines, "vmem", "VMware memory file" },
    { ContentCategory::virtualMachines, "vmsn", "VMware snapshot" },
    { ContentCategory::virtualMachines, "vmss", "VMware suspended state" },
    { ContentCategory::virtualMachines, "ova ovf", "Virtual appliance" },
    { ContentCategory::virtualMachines, "box", "Vagrant box" },
    { ContentCategory::archives, "zip zipx 7z rar tar gz tgz bz2 tbz tbz2 xz txz zst tzst lz lz4 lzma z cab sit sitx cpio arj ace bak", {} },
    { ContentCategory::archives, "dmg iso img cdr toast", "Disk image" },
    { ContentCategory::archives, "sparseimage", "Sparse disk image" },
    { ContentCategory::archives, "xip", "XIP archive" },
    { ContentCategory::archives, "pkg mpkg", "Installer package" },
    { ContentCategory::archives, "ipsw", "Device firmware" },
    { ContentCategory::caches, "cache tmp temp part partial crdownload download", {} },
    { ContentCategory::logs, "log ips crash diag spin hang panic tracev3 asl etl", {} },
    { ContentCategory::logs, "ips crash", "Crash report" },
    { ContentCategory::logs, "tracev3", "Unified log" },
};

inline constexpr PackageRow packageRows[] = {
    { ContentCategory::video, "fcpbundle", "Final Cut Pro library" },
    { ContentCategory::video, "fcpcache", "Final Cut Pro cache" },
    { ContentCategory::video, "fcpxmld", "Final Cut Pro XML" },
    { ContentCategory::video, "imovielibrary", "iMovie library" },
    { ContentCategory::video, "theater", "iMovie Theater" },
    { ContentCategory::video, "rcproject", "iMovie project" },
    { ContentCategory::video, "tvlibrary", "TV library" },
    { ContentCategory::video, "cmproj", "Camtasia project" },
    { ContentCategory::video, "screenflow", "ScreenFlow document" },
    { ContentCategory::video, "motn", "Motion project" },
    { ContentCategory::video, "fcpx", "Final Cut Pro project" },
    { ContentCategory::photos, "photoslibrary", "Photos library" },
    { ContentCategory::photos, "photolibrary", "iPhoto library" },
    { ContentCategory::photos, "aplibrary", "Aperture library" },
    { ContentCategory::photos, "migratedphotolibrary", "Photos library" },
    { ContentCategory::photos, "lrdata", "Lightroom previews" },
    { ContentCategory::photos, "lrlibrary", "Lightroom library" },
    { ContentCategory::photos, "cocatalog", "Capture One catalog" },
    { ContentCategory::photos, "cosessiondb", "Capture One session" },
    { ContentCategory::music, "logicx", "Logic Pro project" },
    { ContentCategory::music, "band", "GarageBand project" },
    { ContentCategory::music, "musiclibrary", "Music library" },
    { ContentCategory::music, "component", "Audio Unit plug-in" },
    { ContentCategory::music, "vst", "VST plug-in" },
    { ContentCategory::music, "vst3", "VST3 plug-in" },
    { ContentCategory::music, "aaxplugin", "AAX plug-in" },
    { ContentCategory::music, "nicnt", "Native Instruments library" },
    { ContentCategory::music, "mainstage concert", "MainStage concert" },
    { ContentCategory::documents, "pages", "Pages document" },
    { ContentCategory::documents, "numbers", "Numbers spreadsheet" },
    { ContentCategory::documents, "key", "Keynote presentation" },
    { ContentCategory::documents, "rtfd", "Rich text document" },
    { ContentCategory::documents, "scriv", "Scrivener project" },
    { ContentCategory::documents, "epub", "EPUB book" },
    { ContentCategory::documents, "mbox mailbox", "Mailbox" },
    { ContentCategory::documents, "textbundle", "Text bundle" },
    { ContentCategory::documents, "ibooks", "Apple Books book" },
    { ContentCategory::apps, "app", "Application" },
    { ContentCategory::apps, "appex", "App extension" },
    { ContentCategory::apps, "framework", "Framework" },
    { ContentCategory::apps, "plugin", "Plug-in" },
    { ContentCategory::apps, "bundle", "Bundle" },
    { ContentCategory::apps, "kext", "Kernel extension" },
    { ContentCategory::apps, "dext", "Driver extension" },
    { ContentCategory::apps, "xpc", "XPC service" },
    { ContentCategory::apps, "prefpane", "Settings pane" },
    { ContentCategory::apps, "saver", "Screen saver" },
    { ContentCategory::apps, "qlgenerator", "Quick Look plug-in" },
    { ContentCategory::apps, "mdimporter", "Spotlight importer" },
    { ContentCategory::apps, "wdgt", "Widget" },
    { ContentCategory::apps, "osax", "Scripting addition" },
    { ContentCategory::developer, "xcodeproj", "Xcode project" },
    { ContentCategory::developer, "xcworkspace", "Xcode workspace" },
    { ContentCategory::developer, "playground", "Swift playground" },
    { ContentCategory::developer, "xcarchive", "Xcode archive" },
    { ContentCategory::developer, "dsym", "Debug symbols" },
    { ContentCategory::developer, "xcframework", "XCFramework" },
    { ContentCategory::developer, "xcresult", "Xcode test results" },
    { ContentCategory::developer, "docc", "Documentation catalog" },
    { ContentCategory::developer, "doccarchive", "Documentation archive" },
    { ContentCategory::developer, "simruntime", "Simulator runtime" },
    { ContentCategory::developer, "sdk", "SDK" },
    { ContentCategory::developer, "platform", "Developer platform" },
    { ContentCategory::developer, "xctest", "Test bundle" },
    { ContentCategory::developer, "swiftpm", "Swift package" },
    { ContentCategory::developer, "xcassets", "Asset catalog" },
    { ContentCategory::ai, "mlpackage", "Core ML package" },
    { ContentCategory::ai, "mlmodelc", "Compiled Core ML model" },
    { ContentCategory::ai, "mlmodel", "Core ML model" },
    { ContentCategory::virtualMachines, "utm", "UTM virtual machine" },
    { ContentCategory::virtualMachines, "pvm pvmp", "Parallels virtual machine" },
    { ContentCategory::virtualMachines, "hdd", "Parallels virtual disk" },
    { ContentCategory::virtualMachines, "vmwarevm", "VMware virtual machine" },
    { ContentCategory::virtualMachines, "macvm", "Virtual machine" },
    { ContentCategory::virtualMachines, "vbox", "VirtualBox virtual machine" },
    { ContentCategory::virtualMachines, "tart", "Tart virtual machine" },
    { ContentCategory::archives, "sparsebundle", "Sparse bundle disk image" },
    { ContentCategory::archives, "backupbundle backupdb", "Time Machine backup" },
    { ContentCategory::archives, "mpkg pkg", "Installer package" },
    { ContentCategory::logs, "logarchive", "Log archive" },
};

inline constexpr FolderRow folderRows[] = {
    { FolderRow::listedNames, "Movies", ContentCategory::video, RuleStrength::weak, {}, {}, false },
    { FolderRow::listedNames, "Pictures", ContentCategory::photos, RuleStrength::weak, {}, {}, false },
    { FolderRow::listedNames, "Music", ContentCategory::music, RuleStrength::weak, {}, {}, false },
    { FolderRow::listedNames, "Documents|Mobile Documents|Mail|Messages", ContentCategory::documents, RuleStrength::weak, {}, {}, false },
    { FolderRow::listedNames, "Applications", ContentCategory::apps, RuleStrength::weak, {}, {}, false },
    { FolderRow::listedNames, "Developer|Projects|src|repos|GitHub", ContentCategory::developer, RuleStrength::weak, {}, {}, false },
    { FolderRow::listedNames, "Final Cut Backups|Final Cut Original Media|Final Cut Pro Backups|Motion Templates.localized|Motion Templates", ContentCategory::video, RuleStrength::strong, "Final Cut Pro media", {}, false },
    { FolderRow::listedNames, "iMovie Library.imovielibrary|iMovie Theater.theater", ContentCategory::video, RuleStrength::strong, "iMovie library", {}, false },
    { FolderRow::listedNames, "Blackmagic Design|DaVinci Resolve", ContentCategory::video, RuleStrength::strong, "DaVinci Resolve", {}, false },
    { FolderRow::listedNames, "Adobe Premiere Pro Auto-Save", ContentCategory::video, RuleStrength::strong, "Premiere Pro auto-save", {}, false },
    { FolderRow::listedNames, "Screen Recordings", ContentCategory::video, RuleStrength::strong, {}, {}, false },
    { FolderRow::listedNames, "Photo Booth Library", ContentCategory::photos, RuleStrength::strong, "Photo Booth library", {}, false },
    { FolderRow::listedNames, "Lightroom|Lightroom Catalog", ContentCategory::photos, RuleStrength::strong, "Lightroom", {}, false },
    { FolderRow::listedNames, "Capture One", ContentCategory::photos, RuleStrength::strong, "Capture One", {}, false },
    { FolderRow::listedNames, "Audio Music Apps|Apple Loops|GarageBand|Logic|Logic Pro X", ContentCategory::music, RuleStrength::strong, "Logic Pro and GarageBand content", {}, false },
    { FolderRow::listedNames, "Native Instruments|Spitfire Audio|Kontakt Libraries|Arturia|Splice", ContentCategory::music, RuleStrength::strong, "Instruments and samples", {}, false },
    { FolderRow::listedNames, "Ableton|Ableton Live Packs", ContentCategory::music, RuleStrength::strong, "Ableton Live", {}, false },
    { FolderRow::listedNames, "Components|VST|VST3|MAS", ContentCategory::music, RuleStrength::strong, {}, "Plug-Ins", false },
    { FolderRow::listedNames, "Audio", ContentCategory::music, RuleStrength::strong, {}, "Library", false },
    { FolderRow::listedNames, "Podcasts|com.apple.podcasts", ContentCategory::music, RuleStrength::strong, "Podcasts", {}, false },
    { FolderRow::listedNames, "Steam|steamapps", ContentCategory::apps, RuleStrength::strong, "Steam games", {}, false },
    { FolderRow::listedNames, "Epic|Battle.net|CrossOver|GOG Galaxy", ContentCategory::apps, RuleStrength::strong, "Games", {}, false },
    { FolderRow::listedNames, ".git|.svn|.hg", ContentCategory::developer, RuleStrength::strong, "Version control", {}, false },
    { FolderRow::listedNames, "node_modules|bower_components|.pnpm-store|.npm|.yarn|.bun|.deno", ContentCategory::developer, RuleStrength::strong, "JavaScript packages", {}, false },
    { FolderRow::listedNames, ".venv|venv|site-packages|__pycache__|.pyenv|.conda|miniconda3|anaconda3|.tox|.mypy_cache|.pytest_cache|.ruff_cache", ContentCategory::developer, RuleStrength::strong, "Python environment", {}, false },
    { FolderRow::listedNames, "DerivedData", ContentCategory::developer, RuleStrength::strong, "Xcode build data", {}, false },
    { FolderRow::listedNames, "CoreSimulator", ContentCategory::developer, RuleStrength::strong, "Simulators", {}, false },
    { FolderRow::listedNames, "iOS DeviceSupport|watchOS DeviceSupport|tvOS DeviceSupport|visionOS DeviceSupport|macOS DeviceSupport", ContentCategory::developer, RuleStrength::strong, "Device support files", {}, false },
    { FolderRow::listedNames, "Archives", ContentCategory::developer, RuleStrength::strong, "Xcode archives", "Xcode", false },
    { FolderRow::listedNames, "Pods|Carthage|.cocoapods|.swiftpm|.build", ContentCategory::developer, RuleStrength::strong, "Swift and Cocoa packages", {}, false },
    { FolderRow::listedNames, ".gradle|.m2|.android|Android|.kotlin|.konan", ContentCategory::developer, RuleStrength::strong, "Android and JVM", {}, false },
    { FolderRow::listedNames, ".cargo|.rustup|target", ContentCategory::developer, RuleStrength::strong, "Rust", {}, false },
    { FolderRow::listedNames, "homebrew|Cellar|Caskroom|linuxbrew", ContentCategory::developer, RuleStrength::strong, "Homebrew", {}, false },
    { FolderRow::listedNames, ".nvm|.rbenv|.gem|.cpan|go|.dotnet|.nuget", ContentCategory::developer, RuleStrength::strong, "Toolchains", {}, false },
    { FolderRow::listedNames, "CommandLineTools", ContentCategory::developer, RuleStrength::strong, "Command Line Tools", {}, false },
    { FolderRow::listedNames, "huggingface|.ollama|.lmstudio|lm-studio|LM Studio|DiffusionBee|.diffusionbee|whisper|gpt4all|nomic.ai|jan|Draw Things", ContentCategory::ai, RuleStrength::strong, "AI models", {}, false },
    { FolderRow::listedNames, "models", ContentCategory::ai, RuleStrength::strong, {}, ".ollama", false },
    // One rule per agent place: its folder name, inside the folder before it, formatted "AGENT data".
    { FolderRow::agentPlaces, {}, ContentCategory::ai, RuleStrength::strong, {}, {}, false },
    { FolderRow::listedNames, "com.docker.docker|.docker|.orbstack|OrbStack|.colima|.lima|.podman|containers", ContentCategory::virtualMachines, RuleStrength::strong, "Containers", {}, false },
    { FolderRow::listedNames, "Parallels|Virtual Machines.localized|Virtual Machines|VirtualBox VMs|.vagrant.d|com.utmapp.UTM|UTM|.tart|Multipass|VMware Fusion", ContentCategory::virtualMachines, RuleStrength::strong, "Virtual machines", {}, false },
    { FolderRow::listedNames, "MobileSync", ContentCategory::archives, RuleStrength::strong, "iPhone and iPad backups", {}, false },
    { FolderRow::listedNames, "Backups.backupdb|.MobileBackups", ContentCategory::archives, RuleStrength::strong, "Time Machine backups", {}, false },
    { FolderRow::listedNames, "Installers|Installer Cache", ContentCategory::archives, RuleStrength::strong, {}, {}, false },
    { FolderRow::listedNames, "Caches|Cache|cache|.cache|caches|GPUCache|Code Cache|ShaderCache|GrShaderCache|DawnCache|CacheStorage|Service Worker", ContentCategory::caches, RuleStrength::strong, {}, {}, false },
    { FolderRow::listedNames, "Media Cache|Media Cache Files|Peak Files|CacheClip|Render Files|Analysis Files|Thumbnail Media", ContentCategory::caches, RuleStrength::strong, "Video app cache", {}, false },
    { FolderRow::listedNames, "tmp|Temp|TemporaryItems", ContentCategory::caches, RuleStrength::strong, {}, {}, false },
    { FolderRow::listedNames, "folders", ContentCategory::caches, RuleStrength::strong, "Per-user temporary files and caches", "var", false },
    { FolderRow::listedNames, "Logs|logs|DiagnosticReports|CrashReporter|_logs|Diagnostics", ContentCategory::logs, RuleStrength::strong, {}, {}, false },
    { FolderRow::listedNames, "log|logs|diagnostics", ContentCategory::logs, RuleStrength::strong, {}, "var", false },
    { FolderRow::listedNames, "System|private|usr|bin|sbin|cores|Library", ContentCategory::system, RuleStrength::weak, {}, {}, true },
    { FolderRow::listedNames, ".Spotlight-V100", ContentCategory::system, RuleStrength::strong, "Spotlight index", {}, false },
    { FolderRow::listedNames, ".fseventsd", ContentCategory::system, RuleStrength::strong, "File system events", {}, false },
    { FolderRow::listedNames, ".DocumentRevisions-V100", ContentCategory::system, RuleStrength::strong, "Document versions", {}, false },
    { FolderRow::listedNames, ".PreviousSystemInformation|MobileSoftwareUpdate|AssetsV2|MobileAsset|com.apple.MobileAsset", ContentCategory::system, RuleStrength::strong, "System downloads", {}, false },
    { FolderRow::listedNames, "vm", ContentCategory::system, RuleStrength::strong, "Swap and sleep image", "var", false },
    { FolderRow::listedNames, "db", ContentCategory::system, RuleStrength::strong, {}, "var", false },
};

// File names that say what they are whatever their extension.
inline constexpr SpecialNameRow specialNameRows[] = {
    { "Docker.raw", ContentCategory::virtualMachines, "Docker disk" },
    { "Docker.qcow2", ContentCategory::virtualMachines, "Docker disk" },
    { "data.img", ContentCategory::virtualMachines, "Virtual machine disk" },
    { "sleepimage", ContentCategory::system, "Sleep image" },
    { ".DS_Store", ContentCategory::system, "Finder view settings" },
    { "store.db", ContentCategory::system, {} },
};

// Extensions that mean 3D models, video or samplers in one world and source or build
// output in a developer's: inside a weak developer folder they count as developer.
inline constexpr std::array<std::string_view, 3> developerAmbiguousExtensions { "mts", "obj", "exs" };

}
