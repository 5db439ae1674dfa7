#include "Classification/PackageTypes.hpp"

#include "Classification/ConstantHashTable.hpp"
#include "Classification/ContentTables.hpp"

#include <array>

namespace tarnwick::PackageTypes {

namespace {

// Bundle types that are declared packages without the classifier having a rule for them:
// script and workflow bundles, documentation sets, plug-in bundles of various hosts,
// Safari's unfinished downloads, interface and Core Data model bundles.
constexpr std::array<std::string_view, 15> otherBundleExtensions {
    "scptd", "wflow", "workflow", "action", "docset", "xcplugin", "ideplugin", "colorpicker", "webplugin",
    "safariextension", "appdownload", "download", "systemextension", "nib", "xcdatamodeld",
};

class Table {
public:
    Table()
    {
        for (std::string_view extension : ContentTables::builtIn().packageExtensions())
            add(extension);
        for (std::string_view extension : otherBundleExtensions)
            add(extension);
    }
    [[nodiscard]] bool contains(std::string_view extension) const { return m_extensions.find(extension) != nullptr; }

private:
    void add(std::string_view extension) { m_extensions.insertOrAssign(extension, true); }
    // Whole extensions, without the classifier's length limit: a folder named
    // Photos.migratedphotolibrary is still a package.
    ConstantHashTable<std::string_view, bool> m_extensions;
};

}

bool isDeclaredPackageExtension(std::string_view lowercasedExtension)
{
    static const Table* table = new Table();
    return table->contains(lowercasedExtension);
}

}
