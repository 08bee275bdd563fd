// The job commands of the display loop, run as scripted sessions.
#include "session/job_commands.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

#include "session_helpers.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

// Serves one canned HTTP answer on a loopback port.
struct OneShotServer {
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    std::string url;
    std::jthread thread;   // destroyed first: joins once the destructor shut the socket
    explicit OneShotServer(const std::string& answer) {
        sockaddr_in a{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
        socklen_t len = sizeof a;
        bind(fd, reinterpret_cast<sockaddr*>(&a), len);
        getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len);
        listen(fd, 1);
        url = "http://127.0.0.1:" + std::to_string(ntohs(a.sin_port));
        thread = std::jthread([this, answer] {
            char buf[2048];
            if (int c = accept(fd, nullptr, nullptr); c >= 0) {
                (void)recv(c, buf, sizeof buf, 0);
                (void)send(c, answer.data(), answer.size(), MSG_NOSIGNAL);
                close(c);
            }
        });
    }
    ~OneShotServer() { shutdown(fd, SHUT_RDWR); close(fd); }
};

}  // namespace

TEST(JobCommands, SaveAsMakesNestedFoldersAndCopiesTheJob) {
    TestSession t;
    std::string target = t.dir / "work/projects/new/deeper/Wet.xyz";
    run_on_water(t, "menu 40007\nfile " + target + "\n");
    std::string dir = t.dir / "work/projects/new/deeper";
    EXPECT_EQ(t.s.job.name, "Wet");
    EXPECT_TRUE(file_present(dir + "/Wet.xyz"));
    EXPECT_EQ(read_file(dir + "/Wet.key"), "parameters " + t.s.inst.root + "/exem/mm3\n#verbose\n");
    EXPECT_EQ(read_file(dir + "/Wet.geo"), " Job Saved as Wet\n");
    EXPECT_EQ(files::read_lines(t.s.inst.cfgset + "/mrul.def")->front(), dir + "/Wet.xyz");
    EXPECT_TRUE(file_present(t.scratch() + "/water.xyz"));   // the old job stays
}

TEST(JobCommands, SaveAsRefusesTheLibraryAndExistingNamesByLevel) {
    TestSession t;
    std::string lib = t.dir / "work/Library/x.xyz";
    run_on_water(t, "menu 40007\nfile " + lib + "\n");
    EXPECT_TRUE(said(t, "You are attempting to save into the Library"));
    EXPECT_FALSE(file_present(t.dir / "work/Library/x.xyz"));

    TestSession u;
    std::string other = u.scratch() + "/other.xyz";
    write_file(other, read_file(test_data("water.xyz")));
    run_on_water(u, "menu 40007\nfile " + other + "\nfile cancel\n");   // Entry: choose another
    EXPECT_TRUE(said(u, "other job exists\rChoose another name"));
    EXPECT_EQ(u.s.job.name, "water");

    TestSession v;
    write_file(v.scratch() + "/other.xyz", "keep\n");
    run_on_water(v, "menu 40007\nfile " + v.scratch() + "/other.xyz\nmsgbox no\n", 2);   // Advanced: asked
    EXPECT_TRUE(said(v, "other job exists\rOverwrite ?"));
    EXPECT_EQ(read_file(v.scratch() + "/other.xyz"), "keep\n");
}

TEST(JobCommands, OpenRefusesLibraryInsOnlyAndDamagedJobsAndKeepsTheCurrentOne) {
    TestSession t;
    std::string lib = t.dir / "work/mylibrary2";
    write_file(lib + "/lw.xyz", read_file(test_data("water.xyz")));
    write_file(t.scratch() + "/cryst.ins", "TITL\n");
    write_file(t.scratch() + "/bad.xyz", "   3 bad\n garbage\n");
    write_file(t.dir / "elsewhere/wet.xyz", read_file(test_data("water.xyz")));
    run_on_water(t, "menu 40005\nfile " + lib + "/lw.xyz\nfile " + t.scratch() + "/cryst.xyz\nfile " +
                        t.scratch() + "/bad.xyz\nfile cancel\nmenu 40005\nfile " + t.dir / "elsewhere/wet.xyz" + "\n");
    EXPECT_TRUE(said(t, "Zentol will not open files in the Library"));
    EXPECT_TRUE(said(t, "Current jobname INS file exists Choose a different Job"));
    EXPECT_TRUE(said(t, "Input bad.xyz file error"));
    EXPECT_EQ(read_file(t.scratch() + "/bad.xyz"), "   3 bad\n garbage\n");
    EXPECT_EQ(t.s.job.name, "wet");
    EXPECT_EQ(files::current_dir(), t.dir / "elsewhere");
    EXPECT_EQ(read_file(t.dir / "elsewhere/wet.geo"), " Opened wet\n");
    EXPECT_TRUE(file_present(t.scratch() + "/water.xyz"));
}

TEST(JobCommands, RecentJobsAndPtest) {
    TestSession t;
    std::string dir = t.dir / "elsewhere";
    write_file(dir + "/wet.xyz", read_file(test_data("water.xyz")));
    files::write_lines(t.s.inst.cfgset + "/mrul.def", {dir + "/wet.xyz", "/gone/away/x.xyz"});
    // After start the list is water, wet, gone: item 2 opens wet, then item 3
    // (gone: wet, water, gone) says its folder is not there; ptest comes back.
    run_on_water(t, "menu 40068\nmenu 40069\nmenu 40012\n");
    EXPECT_TRUE(said(t, "The folder /gone/away is no longer there"));
    EXPECT_EQ(t.s.job.name, "ptest");
    EXPECT_EQ(files::current_dir(), t.scratch());
    auto mru = *files::read_lines(t.s.inst.cfgset + "/mrul.def");
    EXPECT_EQ(mru[0], t.scratch() + "/ptest.xyz");
    EXPECT_EQ(mru[1], dir + "/wet.xyz");
    EXPECT_EQ(std::count(mru.begin(), mru.end(), dir + "/wet.xyz"), 1);   // once, however often opened
}

TEST(JobCommands, UpdateCheck) {
    TestSession t;   // no address configured: said, never waited for
    run_on_water(t, "menu 40032\n");
    EXPECT_TRUE(said(t, "No update address is configured."));

    // The answer, the address's tail, the script, and what is told in a box or on the status bar.
    const struct { std::string answer, tail, script, box, status; } cases[] = {
        {"HTTP/1.0 200 OK\r\n\r\nZentol\nversion 6001070\n", "/", "msgbox no\n", "A Newer Version of Zentol is Available", ""},
        {"HTTP/1.0 200 OK\r\n\r\nversion 6001060\n", "", "", "You have the Latest Version of Zentol", ""},
        {"HTTP/1.0 404 Not Found\r\n\r\nversion 9999999\n", "", "", "", "No answer from the update server"},
        {"HTTP/1.0 200 OK\r\n\r\nversion abc\n", "", "", "", "The update server's answer holds no version"},
    };
    for (const auto& c : cases) {
        OneShotServer server(c.answer);
        TestSession u;
        u.s.engines.values["update_url"] = server.url + c.tail;
        run_on_water(u, "menu 40032\n" + c.script);
        if (c.box.empty()) {
            EXPECT_TRUE(u.tk.message_boxes().empty()) << c.answer;
            EXPECT_TRUE(status_was(u, 9, c.status)) << c.answer;
        } else {
            EXPECT_TRUE(said(u, c.box)) << c.answer;
        }
    }
}
