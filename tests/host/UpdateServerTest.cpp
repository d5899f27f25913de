// The demo update server, asked by the curl program as a browser or a proxy client would.
#include "achost/UpdateServer.hpp"

#include "HostTest.hpp"

#include <tuple>

namespace {

class UpdateServerTest : public xn_test::TempFolderTest {
protected:
    void SetUp() override {
        xn_test::TempFolder::Write(temp.PathOf("versions16.txt"),
                                   "MoravelLibrary 19.0.5.2400 (AC190) 15/01/2019\n");
        std::filesystem::create_directory(temp.PathOf("sub"));
        xn_test::TempFolder::Write(temp.PathOf("sub/inner.txt"), "inner");
        xn_test::TempFolder::Write(temp.PathOf(".hidden"), "hidden");
        std::string error;
        ASSERT_TRUE(server.Start(temp.Path(), &error)) << error;
    }
    // The status code and body curl got; `options` go before the address.
    std::string Fetch(const std::string& options, const std::string& url) {
        std::string output;
        xn_test::RunProgram("curl -s -w ' %{http_code}' " + options + " '" + url + "'", &output);
        return output;
    }

    achost::UpdateServer server;
};

TEST_F(UpdateServerTest, ServesTheFolderUnderUpdatePluginsAlsoToProxyRequests) {
    const std::string ok = "MoravelLibrary 19.0.5.2400 (AC190) 15/01/2019\n 200";
    const std::string proxy = "-x " + server.Address();
    const std::tuple<const char*, std::string, std::string, std::string> cases[] = {
        {"origin form", "", server.Address() + "/update_plugins/versions16.txt", ok},
        {"proxy form, any host", proxy, "http://update.moravel.example/update_plugins/versions16.txt", ok},
        {"a query is ignored", "", server.Address() + "/update_plugins/versions16.txt?acver=19", ok},
        {"outside /update_plugins/", "", server.Address() + "/versions16.txt", "404"},
        {"a missing file", "", server.Address() + "/update_plugins/versions_plus.txt", "404"},
        {"a subfolder", "", server.Address() + "/update_plugins/sub/inner.txt", "404"},
        {"a hidden file", "", server.Address() + "/update_plugins/.hidden", "404"},
        {"a folder", "", server.Address() + "/update_plugins/sub", "404"},
        {"climbing out", "--path-as-is", server.Address() + "/update_plugins/../versions16.txt", "404"},
        {"another method", "-X POST", server.Address() + "/update_plugins/versions16.txt", " 405"},
    };
    for (const auto& [name, options, url, expected] : cases) {
        SCOPED_TRACE(name);
        const std::string answer = Fetch(options, url);
        EXPECT_EQ(expected,
                  answer.size() > 4 && expected.size() == 3 ? answer.substr(answer.size() - 3) : answer);
    }
}

} // namespace
