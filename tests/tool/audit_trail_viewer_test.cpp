// The default trail viewer, audit_trail.xsl, in a real browser: headless Chromium opens a saved
// trail with the stylesheet beside it, served from this machine, and the page it renders must
// show the sessions and events. A screenshot is kept in the build tree for a person to look at.
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <regex>
#include <string>

#include "support/run_program.h"
#include "support/temp_dir.h"
#include "tool/local_file_server.h"
#include "zenutl/audit_trail.h"
#include "zenutl/audit_trail_wrapper.h"
#include "zenutl/system_info.h"

namespace {

using zenutl_test::ProgramResult;

// Chromium as the test runs it: no sandbox (the test may run as root), no GPU, nothing that
// reaches the network, and a profile of its own that goes with the test's folder.
ProgramResult Chromium(const std::string& profile, const std::vector<std::string>& extra) {
  std::vector<std::string> args = {"/usr/bin/chromium",
                                   "--headless",
                                   "--no-sandbox",
                                   "--disable-gpu",
                                   "--disable-quic",
                                   "--no-first-run",
                                   "--disable-background-networking",
                                   "--disable-component-update",
                                   "--disable-sync",
                                   "--user-data-dir=" + profile};
  args.insert(args.end(), extra.begin(), extra.end());
  zenutl_test::ProgramOptions options;
  options.timeoutSeconds = 90;
  return zenutl_test::RunProgram(args, options);
}

class AuditTrailViewer : public zenutl_test::TempDirTest {};

TEST_F(AuditTrailViewer, ChromiumShowsSessionsAndIndentedSubTrailEvents) {
  // A trail as an application leaves it: in its folder with the stylesheet it supplies.
  boost::filesystem::create_directories(Dir() / "app");
  boost::filesystem::copy_file(ZENUTL_STYLESHEET, Dir() / "app" / "audit_trail.xsl");
  const std::string path = File("app/trail.xml");
  for (const char* project : {"Assay 4", "Assay <5> & co"}) {
    boost::shared_ptr<AuditTrail> trail(new AuditTrail(path.c_str(), project, nullptr));
    trail->GetAuditTrailSettings().SetLogEvents(1);
    trail->Load();
    trail->BeginSession();
    AuditTrailWrapper wrapper(trail);
    wrapper.AddEvent("Sample loaded", "rack 3, position 7", nullptr);
    wrapper.PushSubTrail();
    wrapper.AddEvent("Calibration checked", "", nullptr);
    wrapper.PopSubTrail("Batch run", "12 samples");
    trail->EndSessionAndSave();
  }
  // SaveAs takes the stylesheet along to the copy's folder.
  boost::filesystem::create_directories(Dir() / "site");
  {
    AuditTrail trail(path.c_str(), "", nullptr);
    trail.Load();
    trail.SaveAs(File("site/trail.xml").c_str());
  }
  ASSERT_TRUE(boost::filesystem::exists(Dir() / "site" / "audit_trail.xsl"));

  zenutl_test::LocalFileServer server(File("site"));
  const ProgramResult page = Chromium(File("profile"), {"--dump-dom", server.Url("trail.xml")});
  ASSERT_EQ(page.status, 0) << page.err;
  const std::string& dom = page.out;
  const std::string user = ZnSystemInfo::GetUserNameA().GetString();
  EXPECT_NE(dom.find("<h1>Audit trail</h1>"), std::string::npos) << dom;
  EXPECT_NE(dom.find("<td>Project</td><td>Assay 4</td>"), std::string::npos);
  EXPECT_NE(dom.find("<td>Assay &lt;5&gt; &amp; co</td>"), std::string::npos);
  EXPECT_NE(dom.find("<td>" + user + " on "), std::string::npos);
  EXPECT_TRUE(std::regex_search(dom, std::regex("<h2>Session 2 · [-0-9]+ [:0-9]+ \\(UTC")));
  // The sub-trail's event sits in a list inside the event of its operation.
  EXPECT_TRUE(std::regex_search(
      dom, std::regex("<span class=\"message\">Batch run</span><div class=\"details\">12 "
                      "samples</div><ul class=\"events\"><li><span class=\"time\">[^<]+</span>"
                      "<span class=\"message\">Calibration checked</span>")))
      << dom;

  boost::filesystem::create_directories(ZENUTL_ARTEFACTS);
  const std::string shot = std::string(ZENUTL_ARTEFACTS) + "/audit_trail_viewer.png";
  boost::filesystem::remove(shot);
  const ProgramResult screenshot = Chromium(
      File("profile"), {"--screenshot=" + shot, "--window-size=1000,900", server.Url("trail.xml")});
  EXPECT_EQ(screenshot.status, 0) << screenshot.err;
  EXPECT_EQ(zenutl_test::ReadWholeFile(shot).substr(0, 4), "\x89PNG");
}

}  // namespace
