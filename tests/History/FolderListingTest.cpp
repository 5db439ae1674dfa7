#include "History/FolderListing.hpp"

#include "Classification/ContentCategory.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

using namespace tarnwick;
using tarnwick::fixtures::TempFolder;

namespace {

const LiveEntry* entryNamed(const std::vector<LiveEntry>& entries, std::string_view name)
{
    for (const LiveEntry& entry : entries) {
        if (entry.name == name)
            return &entry;
    }
    return nullptr;
}

}

TEST(FolderListing, ListsTheCurrentContentsAsTheScannerSeesThem)
{
    TempFolder folder;
    folder.makeFile("clip.mp4", 300'000);
    folder.makeFile(".secret", 5'000);
    folder.makeFile("Sub/inner.txt", 50'000);
    folder.makeFolder("Guide.docset");
    folder.makeSparseFile("sparse.img", 40'000'000);
    folder.makeLink("link", "clip.mp4");

    auto entries = FolderListing::list(folder.path());
    ASSERT_TRUE(entries) << entries.error().message();
    ASSERT_EQ(entries->size(), 6U);
    for (std::size_t i = 1; i < entries->size(); ++i)
        EXPECT_GE((*entries)[i - 1].allocated, (*entries)[i].allocated) << i;

    struct stat info {};
    ASSERT_EQ(lstat((folder / "clip.mp4").c_str(), &info), 0);
    const LiveEntry* clip = entryNamed(*entries, "clip.mp4");
    ASSERT_NE(clip, nullptr);
    EXPECT_EQ(clip->kind, NodeKind::file);
    EXPECT_EQ(clip->allocated, static_cast<std::int64_t>(info.st_blocks) * 512);
    EXPECT_EQ(clip->logical, 300'000);
    EXPECT_EQ(clip->modified, Date(std::chrono::seconds(info.st_mtim.tv_sec)));
    EXPECT_EQ(clip->flags, NodeFlags());
    EXPECT_FALSE(clip->hidden);
    ASSERT_TRUE(clip->rests);
    EXPECT_EQ(*clip->rests, (std::vector<RestPart> { { RestMode::content, ContentCategories::raw(ContentCategory::video), clip->allocated } }));

    const LiveEntry* sub = entryNamed(*entries, "Sub");
    ASSERT_NE(sub, nullptr);
    EXPECT_EQ(sub->kind, NodeKind::directory);
    EXPECT_TRUE(sub->flags.contains(NodeFlag::contentsUnread));
    EXPECT_TRUE(sub->flags.contains(NodeFlag::incomplete));
    EXPECT_EQ(sub->allocated, 0);
    EXPECT_FALSE(sub->rests);
    EXPECT_EQ(entryNamed(*entries, "Guide.docset")->kind, NodeKind::package);
    EXPECT_EQ(entryNamed(*entries, "link")->kind, NodeKind::symlink);
    EXPECT_TRUE(entryNamed(*entries, ".secret")->hidden);
    const LiveEntry* sparse = entryNamed(*entries, "sparse.img");
    EXPECT_EQ(sparse->logical, 40'000'000);
    EXPECT_LT(sparse->allocated, sparse->logical);
}

TEST(FolderListing, EverythingInAHiddenFolderIsHidden)
{
    TempFolder folder;
    folder.makeFile("visible.txt", 10);
    folder.makeFolder("Inner");
    auto entries = FolderListing::list(folder.path(), FolderListing::Visibility::hidden);
    ASSERT_TRUE(entries);
    ASSERT_EQ(entries->size(), 2U);
    for (const LiveEntry& entry : *entries)
        EXPECT_TRUE(entry.hidden) << entry.name;
}

TEST(FolderListing, FailuresNameThePathAndTheReason)
{
    TempFolder folder;
    folder.makeFile("plain.txt", 10);
    struct Case {
        std::string path;
        int errorNumber;
    };
    const Case cases[] = { { folder / "missing", ENOENT }, { folder / "plain.txt", ENOTDIR } };
    for (const Case& c : cases) {
        auto entries = FolderListing::list(c.path);
        ASSERT_FALSE(entries) << c.path;
        EXPECT_EQ(entries.error(), (FolderListing::Error { c.path, c.errorNumber }));
        EXPECT_NE(entries.error().message().find(c.path), std::string::npos);
        EXPECT_NE(entries.error().message().find(std::strerror(c.errorNumber)), std::string::npos) << entries.error().message();
    }
}
