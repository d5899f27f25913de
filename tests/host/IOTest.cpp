// The host's file system over real files: locations, folders, files, special locations, faults.
#include "FileSystem.hpp"
#include "TempFolder.hpp"
#include "achost/Faults.hpp"
#include "achost/SharedFolder.hpp"

#include <tuple>

namespace {

namespace fs = std::filesystem;
using xn_test::TempFolder;

std::string PathText(const IO::Location& location) {
    IO::Path path;
    return location.ToUTF8POSIXPath(&path) == NoError ? path.ToCStr() : "<error>";
}

std::string NameText(const IO::Name& name) {
    return name.ToString().ToUTF8();
}

class IOTest : public xn_test::TempFolderTest {
protected:
    achost::ScopedFaults faults;
    IO::Location At(const std::string& relative) const { return IO::Location(temp.PathOf(relative).c_str()); }
};

TEST(IOLocation, LastNameOperations) {
    // path, last name (null: ResolveError), after DeleteLastLocalName, after SetLastLocalName("x")
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"/a/b/c", "c", "/a/b", "/a/b/x"},
        {"/a/b/", "b", "/a", "/a/x"},
        {"/a", "a", "/", "/x"},
        {"c", "c", "<error>", "x"},
        {"/", nullptr, "/", "/"}};
    for (const auto& [path, lastName, afterDelete, afterSetToX] : cases) {
        SCOPED_TRACE(path);
        IO::Location location(path);
        IO::Name name;
        EXPECT_EQ(location.GetLastLocalName(&name),
                  lastName ? NoError : GSErrCode(IO::Location::ResolveError));
        EXPECT_EQ(NameText(name), lastName ? lastName : "");
        IO::Location deleted = location;
        deleted.DeleteLastLocalName();
        EXPECT_EQ(PathText(deleted), afterDelete);
        IO::Location renamed = location;
        renamed.SetLastLocalName(IO::Name("x"));
        EXPECT_EQ(PathText(renamed), afterSetToX);
    }
    EXPECT_EQ(PathText(IO::Location(IO::Location("/a/"), IO::Name("b.txt"))), "/a/b.txt");
    GS::UniString text;
    EXPECT_EQ(IO::Location().ToPath(&text), GSErrCode(IO::Location::ResolveError));
}

bool Collect(const IO::Folder&, const IO::Name& name, bool isFolder, void* entries) {
    static_cast<std::vector<std::string>*>(entries)->push_back(NameText(name) + (isFolder ? "/" : ""));
    return NameText(name) != "stop";
}

TEST_F(IOTest, EnumerationIsSortedAndFiltered) {
    for (const char* name : {"b.txt", "A.txt", "c", "stop", "z"})
        TempFolder::Write(temp.PathOf(name), "");
    fs::create_directory(temp.PathOf("d.dir"));
    fs::create_symlink(temp.PathOf("d.dir"), temp.PathOf("link"));
    IO::Folder folder(At(""));
    ASSERT_EQ(folder.GetStatus(), NoError);

    const std::tuple<UInt32, std::vector<std::string>> cases[] = {
        {IO::Folder::FilterFiles | IO::Folder::FilterFolders,
         {"A.txt", "b.txt", "c", "d.dir/", "link/", "stop"}},
        {IO::Folder::FilterFolders, {"d.dir/", "link/"}},
        {IO::Folder::FilterFiles, {"A.txt", "b.txt", "c", "stop"}}};
    for (const auto& [filter, expected] : cases) {
        SCOPED_TRACE(filter);
        std::vector<std::string> entries;
        EXPECT_EQ(folder.Enumerate(Collect, IO::Folder::ResolveLinks, filter, &entries), NoError);
        EXPECT_EQ(entries, expected);
    }
}

// The status of a folder or file object, and the calls that make and remove entries, in order.
TEST_F(IOTest, StatusesAndEntries) {
    for (const char* file : {"file", "gone"})
        TempFolder::Write(temp.PathOf(file), "x");
    fs::create_directory(temp.PathOf("dir"));
    IO::File vanished(At("gone"));
    ASSERT_EQ(vanished.GetStatus(), NoError);
    fs::remove(temp.PathOf("gone"));
    IO::Folder folder(At(""));
    IO::Folder::EntryType fileType = IO::Folder::LinkEntry, folderType = IO::Folder::LinkEntry;
    const std::tuple<const char*, GSErrCode, GSErrCode> rows[] = {
        {"missing folder", IO::Folder(At("missing")).GetStatus(), IO::Folder::FolderNotFound},
        {"a file as a folder", IO::Folder(At("file")).GetStatus(), IO::Folder::NotAFolder},
        {"folders made", IO::Folder(At("new/deep"), IO::Folder::Create).GetStatus(), NoError},
        {"type of a file", folder.GetType(IO::Name("file"), &fileType), NoError},
        {"type of a folder", folder.GetType(IO::Name("new"), &folderType), NoError},
        {"type of a missing entry", folder.GetType(IO::Name("none"), &fileType), IO::Folder::TargetNotFound},
        {"file made", folder.CreateFile(IO::Name("made")), NoError},
        {"file made again", folder.CreateFile(IO::Name("made")), IO::Folder::TargetExists},
        {"file deleted", folder.Delete(IO::Name("made")), NoError},
        {"file deleted again", folder.Delete(IO::Name("made")), IO::Folder::TargetNotFound},
        {"missing file", IO::File(At("missing"), IO::File::Fail).GetStatus(), IO::File::FileNotFound},
        {"file created", IO::File(At("created"), IO::File::Create).GetStatus(), NoError},
        {"a folder as a file", IO::File(At("dir"), IO::File::Create).GetStatus(), IO::File::NotAFile},
        {"a file gone since its status was taken", vanished.Open(IO::File::ReadMode), IO::File::FileNotFound},
        {"in a missing folder", IO::File(At("none/f"), IO::File::Create).GetStatus(),
         IO::File::CreationError},
    };
    for (const auto& [name, result, expected] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(result, expected);
    }
    EXPECT_EQ(fileType, IO::Folder::FileEntry);
    EXPECT_EQ(folderType, IO::Folder::FolderEntry);
    EXPECT_EQ(TempFolder::Names(temp.Path()), (std::set<std::string>{"created", "dir", "file", "new"}));
    EXPECT_TRUE(fs::is_directory(temp.PathOf("new/deep")));
}

TEST_F(IOTest, OpenModesDecideWhereBytesGo) {
    const std::tuple<IO::File::OpenMode, GSErrCode, std::string> cases[] = {
        {IO::File::ReadMode, IO::File::AccessDenied, "hello"},
        {IO::File::WriteMode, NoError, "XYllo"},
        {IO::File::WriteEmptyMode, NoError, "XY"},
        {IO::File::ReadWriteMode, NoError, "XYllo"},
        {IO::File::AppendMode, NoError, "helloXY"}};
    for (const auto& [mode, writeResult, content] : cases) {
        SCOPED_TRACE(mode);
        TempFolder::Write(temp.PathOf("f"), "hello");
        IO::File file(At("f"));
        ASSERT_EQ(file.Open(mode), NoError);
        EXPECT_EQ(file.WriteBin("XY", 2), writeResult);
        EXPECT_EQ(file.Close(), NoError);
        EXPECT_EQ(TempFolder::Read(temp.PathOf("f")), content);
    }
    IO::File file(At("f"));
    EXPECT_EQ(file.Open(static_cast<IO::File::OpenMode>(9)), ErrParam);
}

TEST_F(IOTest, ReadsStopAtTheEndWithEndOfInput) {
    TempFolder::Write(temp.PathOf("f"), "0123456789");
    IO::File file(At("f"));
    ASSERT_EQ(file.Open(IO::File::ReadMode), NoError);
    UInt64 length = 0;
    EXPECT_EQ(file.GetDataLength(&length), NoError);
    EXPECT_EQ(length, 10u);

    char buffer[8] = {};
    USize read = 0;
    EXPECT_EQ(file.Seek(IO::File::Start, 6), NoError);
    EXPECT_EQ(file.ReadBin(buffer, 8, &read), GSErrCode(GS::IChannel::EndOfInput));
    EXPECT_EQ(read, 4u);
    EXPECT_EQ(std::string(buffer, read), "6789");
    EXPECT_EQ(file.Seek(IO::File::Current, -20), GSErrCode(IO::File::IllegalPosition));
    EXPECT_EQ(file.Seek(IO::File::End, -3), NoError);
    EXPECT_EQ(file.ReadBin(buffer, 3, &read), NoError);
    EXPECT_EQ(std::string(buffer, read), "789");
}

TEST_F(IOTest, AReadOnlyFolderRefusesNewFiles) {
    if (!TempFolder::PermissionsAreEnforced())
        GTEST_SKIP() << "file permissions are not enforced for this user";
    fs::create_directory(temp.PathOf("ro"));
    fs::permissions(temp.PathOf("ro"), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(IO::File(At("ro/f"), IO::File::Create).GetStatus(), GSErrCode(IO::File::CreationError));
    EXPECT_EQ(IO::Folder(At("ro")).CreateFile(IO::Name("f")), GSErrCode(IO::Folder::AccessDenied));
}

GSErrCode ReadOneByte(const IO::Location& location) {
    IO::File file(location);
    char c;
    const GSErrCode error = file.Open(IO::File::ReadMode);
    return error != NoError ? error : file.ReadBin(&c, 1);
}

// Reads, writes, folder status and path conversion faults are driven by the framework's file tests.
TEST_F(IOTest, InjectedFaultsFailOneCallWithTheirCode) {
    TempFolder::Write(temp.PathOf("f"), "abc");
    const GSErrCode code = 0x12345;
    using Op = achost::FileOperation;
    const std::tuple<const char*, Op, GSErrCode (*)(const IO::Location&)> cases[] = {
        {"status", Op::FileStatus, [](const IO::Location& l) { return IO::File(l).GetStatus(); }},
        {"open", Op::FileOpen, [](const IO::Location& l) { return IO::File(l).Open(IO::File::ReadMode); }},
        {"length", Op::FileGetDataLength, [](const IO::Location& l) {
             UInt64 n;
             return IO::File(l).GetDataLength(&n);
         }}};
    for (const auto& [name, operation, call] : cases) {
        SCOPED_TRACE(name);
        achost::FailFileOperation(operation, code);
        EXPECT_EQ(call(At("f")), code);
        EXPECT_EQ(call(At("f")), NoError) << "a fault fires once";
    }
    achost::FailFileOperation(Op::FileRead, code, 2);
    EXPECT_EQ(ReadOneByte(At("f")), NoError);
    EXPECT_EQ(ReadOneByte(At("f")), code) << "the second call fails";
}

TEST_F(IOTest, SharedFolderIsCreatedOnDemand) {
    struct Restore {
        const char* saved = std::getenv("XDG_DATA_HOME");
        std::string previous = saved != nullptr ? saved : "";
        ~Restore() {
            achost::SetSharedFolder("");
            saved != nullptr ? setenv("XDG_DATA_HOME", previous.c_str(), 1) : unsetenv("XDG_DATA_HOME");
        }
    } restore;
    setenv("XDG_DATA_HOME", temp.PathOf("xdg").c_str(), 1);
    TempFolder::Write(temp.PathOf("blocker"), "");
    // shared folder set (empty: the default), the folder given, the result
    const std::tuple<std::string, std::string, GSErrCode> cases[] = {
        {temp.PathOf("set/Shared"), temp.PathOf("set/Shared"), NoError},
        {"", temp.PathOf("xdg/achost/Shared"), NoError},
        {temp.PathOf("blocker/Shared"), "", IO::Folder::CreationError}};
    for (const auto& [setting, expected, result] : cases) {
        SCOPED_TRACE(setting);
        achost::SetSharedFolder(setting);
        EXPECT_FALSE(fs::exists(expected));
        IO::Location location;
        ASSERT_EQ(IO::fileSystem.GetSpecialLocation(IO::FileSystem::CommonDocuments, &location), result);
        if (result == NoError) {
            EXPECT_EQ(PathText(location), expected);
            EXPECT_TRUE(fs::is_directory(expected));
        }
    }
}

} // namespace
