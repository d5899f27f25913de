// XN_Location: path rules, conversion through the host, folder questions and enumeration of a real tree.
#include "XN_Location.hpp"
#include "XN_StringTest.hpp"

#include "TempFolder.hpp"
#include "achost/Faults.hpp"

namespace {

namespace fs = std::filesystem;

using xn_test::FromUtf8;
using xn_test::Show;

TEST(XN_Location, SetDropsOneTrailingSlashAndSetLastNameReplacesTheLastComponent) {
    // path, stored by Set, after SetLastName("x.txt")
    const std::tuple<const char*, const char*, const char*> cases[] = {{"/a/b/", "/a/b", "/a/x.txt"},
                                                                       {"/a//", "/a/", "/a/x.txt"},
                                                                       {"/", "", "x.txt"},
                                                                       {"", "", "x.txt"},
                                                                       {"c", "c", "x.txt"},
                                                                       {"/c", "/c", "/x.txt"},
                                                                       {nullptr, "<null>", "<null>"}};
    for (const auto& [path, stored, renamed] : cases) {
        SCOPED_TRACE(path ? path : "null");
        XN_Location location;
        location.Set(path ? FromUtf8(path) : XN_String());
        EXPECT_EQ(Show(location), stored);
        location.SetLastName("x.txt");
        EXPECT_EQ(Show(location), renamed);
    }
}

TEST(XN_Location, ConvertsToAndFromHostLocations) {
    achost::ScopedFaults faults;
    XN_Location location;
    location.Set(IO::Location("/p/q/"));
    EXPECT_EQ(Show(location), "/p/q");
    location.Set(IO::Location());
    EXPECT_EQ(Show(location), "<null>");

    const XN_Location accented(FromUtf8("/tmp/Grüße/€"));
    EXPECT_EQ(Show(accented.GetPOSIXPath()), "/tmp/Grüße/€");
    EXPECT_EQ(Show(XN_Location().GetPOSIXPath()), "<null>");

    achost::FailFileOperation(achost::FileOperation::LocationToPath, ErrIO);
    location.Set(IO::Location("/p"));
    EXPECT_EQ(Show(location), "<null>") << "a failed conversion leaves no location";
    EXPECT_EQ(Show(XN_Location::AddOnLocation(true)), "<null>") << "outside a running add-on";
}

class XN_LocationTreeTest : public xn_test::TempFolderTest {
protected:
    // work/ A.TXT b.txt readme f.d/{readme, x.d} sub/{c.txt, deep/d.TxT}
    void SetUp() override {
        for (const char* folder : {"f.d", "sub/deep"})
            fs::create_directories(temp.PathOf(folder));
        for (const char* file :
             {"A.TXT", "b.txt", "readme", "f.d/readme", "f.d/x.d", "sub/c.txt", "sub/deep/d.TxT"})
            xn_test::TempFolder::Write(temp.PathOf(file), "x");
        root = XN_Location(FromUtf8(temp.Path()));
    }

    // The paths of `list` relative to the test folder.
    std::vector<std::string> Relative(const XN_List<XN_Location>& list) const {
        std::vector<std::string> paths;
        for (long i = 0; i < list.count; ++i)
            paths.push_back(Show(list[i]).substr(temp.Path().size() + 1));
        return paths;
    }

    achost::ScopedFaults faults;
    XN_Location root;
};

TEST_F(XN_LocationTreeTest, FilesFilteredByExtensionSubFoldersAndFailures) {
    // extensions: {"-"} for no filter list at all
    const std::tuple<const char*, std::vector<const char*>, bool, std::vector<std::string>> cases[] = {
        {"no filter", {"-"}, false, {"A.TXT", "b.txt", "readme"}},
        {"empty filter", {}, false, {"A.TXT", "b.txt", "readme"}},
        {"case ignored", {"txt"}, false, {"A.TXT", "b.txt"}},
        {"all levels, depth first",
         {"-"},
         true,
         {"A.TXT", "b.txt", "f.d/readme", "f.d/x.d", "readme", "sub/c.txt", "sub/deep/d.TxT"}},
        {"dot in a folder name is no extension", {"d"}, true, {"f.d/x.d"}},
        {"empty extension", {""}, true, {"f.d/readme", "readme"}},
        {"several", {"D", "TXT"}, true, {"A.TXT", "b.txt", "f.d/x.d", "sub/c.txt", "sub/deep/d.TxT"}}};
    for (const auto& [name, extensions, recursive, expected] : cases) {
        SCOPED_TRACE(name);
        XN_List<XN_String> filter;
        for (const char* extension : extensions)
            filter.AddData(FromUtf8(extension), -1);
        const bool noFilter = extensions.size() == 1 && std::string(extensions[0]) == "-";
        XN_List<XN_Location> files;
        EXPECT_TRUE(root.GetFilesInFolder(noFilter ? nullptr : &filter, recursive, &files));
        EXPECT_EQ(Relative(files), expected);
    }
    // Subfolders, folder tests and failures.
    XN_List<XN_Location> folders;
    EXPECT_TRUE(root.GetSubFolders(false, &folders));
    EXPECT_EQ(Relative(folders), (std::vector<std::string>{"f.d", "sub"}));
    folders.Reset();
    EXPECT_TRUE(root.GetSubFolders(true, &folders));
    EXPECT_EQ(Relative(folders), (std::vector<std::string>{"f.d", "sub", "sub/deep"}));

    const std::pair<const char*, bool> folderCases[] = {
        {"sub", true}, {"sub/deep", true}, {"b.txt", false}, {"missing", false}, {"missing/sub", false}};
    for (const auto& [relative, isFolder] : folderCases) {
        SCOPED_TRACE(relative);
        EXPECT_EQ(XN_Location(FromUtf8(temp.PathOf(relative))).IsFolder(), isFolder);
    }
    EXPECT_FALSE(XN_Location().IsFolder());
    XN_List<XN_Location> files;
    EXPECT_FALSE(XN_Location(FromUtf8(temp.PathOf("missing"))).GetFilesInFolder(nullptr, true, &files));
    EXPECT_FALSE(XN_Location().GetSubFolders(true, &files));
    achost::FailFileOperation(achost::FileOperation::FolderEnumerate, ErrIO);
    EXPECT_FALSE(root.GetFilesInFolder(nullptr, false, &files));
    EXPECT_EQ(files.count, 0);

    // The walk stops at a subfolder that cannot be opened; stopping is not a host error.
    achost::FailFileOperation(achost::FileOperation::FolderStatus, ErrIO, 2);
    EXPECT_TRUE(root.GetFilesInFolder(nullptr, true, &files));
    EXPECT_EQ(Relative(files), (std::vector<std::string>{"A.TXT", "b.txt"}));
}

} // namespace
