"""scripts/check-includes, run on small trees with one planted fault each."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


def header(*includes):
    return "#pragma once\n\n" + "".join(f"#include {i}\n" for i in includes)


def source(*includes):
    return "".join(f"#include {i}\n" for i in includes)


class CheckIncludesTest(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="includes-test-"))
        self.addCleanup(shutil.rmtree, self.root)

    def tree(self, **files):
        """Writes files; in a name, __ stands for / and _h, _cpp at its end for the suffix."""
        for name, text in files.items():
            stem, _, suffix = name.rpartition("_")
            path = self.root / (stem.replace("__", "/") + "." + suffix)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)

    def run_check(self):
        return subprocess.run([ROOT / "scripts/check-includes", "--root", self.root],
                              capture_output=True, text=True, timeout=30)

    def assert_tidy(self):
        result = self.run_check()
        self.assertEqual((result.returncode, result.stderr), (0, ""), result.stdout)

    def assert_broken(self, *lines):
        """Exactly these rules are broken, each told with a remedy on the next line."""
        result = self.run_check()
        self.assertEqual((result.returncode, result.stderr), (1, ""))
        told = result.stdout.splitlines()[:-1]
        self.assertEqual(told[0::2], list(lines))
        for remedy in told[1::2]:
            self.assertRegex(remedy, r"^    \S")

    # --- folders

    def test_includes_of_lower_layers_are_accepted(self):
        self.tree(
            framework__base__String_h=header("<string>", "<sys/types.h>", "<toml++/toml.h>"),
            framework__msglyr__Message_h=header('"framework/base/String.h"', "<zmq.h>"),
            framework__proc__Svc_h=header('"framework/msglyr/Message.h"'),
            model__sd__SlotMo_h=header('"framework/proc/Svc.h"'),
            serviceOrchAG__svc__Vocabulary_h=header('"framework/base/String.h"'),
            serviceOrchAG__server__MsgHandler_h=header('"serviceOrchAG/svc/Vocabulary.h"',
                                                       '"model/sd/SlotMo.h"'),
            dme__store__ObjectStore_h=header('"model/sd/SlotMo.h"', "<sqlite3.h>"),
            dme__jobs__JobTable_h=header('"dme/store/ObjectStore.h"', "<tl/expected.hpp>"),
            dme__Engine_h=header('"dme/jobs/JobTable.h"'),
            sma__messages__Requests_h=header('"serviceOrchAG/svc/Vocabulary.h"'),
            sma__agent__BladeAgent_h=header('"sma/messages/Requests.h"'),
            sma__Fleet_cpp=source('"sma/agent/BladeAgent.h"', "<nlohmann/json.hpp>"),
            supervisor__http__Server_cpp=source('"dme/store/ObjectStore.h"',
                                                   "<boost/beast.hpp>"),
            tests__dme__store__ObjectStoreTest_cpp=source('"dme/store/ObjectStore.h"',
                                                          "<gtest/gtest.h>", "<zmq.h>"),
            bench__wire_cpp=source('"bench/generated/wire.pb.h"'))
        self.assert_tidy()

    def test_back_edge_between_layers_is_found(self):
        self.tree(framework__proc__Svc_h=header(),
                  framework__os__Task_h=header("<atomic>", '"framework/proc/Svc.h"'))
        self.assert_broken("framework/os/Task.h:4: framework/os must not include "
                           "framework/proc/Svc.h")

    def test_neighbour_in_transport_layer_is_refused(self):
        self.tree(framework__noxxml__Limits_h=header(),
                  framework__msglyr__Message_h=header('"framework/noxxml/Limits.h"'))
        self.assert_broken("framework/msglyr/Message.h:3: framework/msglyr must not include "
                           "framework/noxxml/Limits.h")

    def test_gateway_and_engine_do_not_know_each_other(self):
        self.tree(serviceOrchAG__bridge__ClientMap_h=header('"dme/ObjectStore.h"'),
                  serviceOrchAG__svc__Vocabulary_h=header(),
                  dme__ObjectStore_h=header('"serviceOrchAG/svc/Vocabulary.h"'))
        result = self.run_check()
        self.assertIn("dme/ObjectStore.h:3: dme must not include serviceOrchAG/svc/Vocabulary.h",
                      result.stdout)
        self.assertIn("serviceOrchAG/bridge/ClientMap.h:3: serviceOrchAG/bridge must not include "
                      "dme/ObjectStore.h", result.stdout)

    def test_agent_and_supervisor_know_only_the_vocabulary_of_the_gateway(self):
        self.tree(serviceOrchAG__svc__Svc_h=header(),
                  sma__Agent_h=header('"serviceOrchAG/svc/Svc.h"'),
                  supervisor__Plugin_h=header('"serviceOrchAG/svc/Svc.h"'))
        self.assert_broken("sma/Agent.h:3: sma must not include serviceOrchAG/svc/Svc.h",
                           "supervisor/Plugin.h:3: supervisor must not include "
                           "serviceOrchAG/svc/Svc.h")

    def test_agent_does_not_know_the_service_layer(self):
        self.tree(framework__proc__Svc_h=header(),
                  sma__Agent_h=header('"framework/proc/Svc.h"'))
        self.assert_broken("sma/Agent.h:3: sma must not include framework/proc/Svc.h")

    def test_product_does_not_know_tests(self):
        self.tree(tests__support__LogCapture_h=header(),
                  dme__Engine_h=header('"tests/support/LogCapture.h"'))
        self.assert_broken("dme/Engine.h:3: dme must not include tests/support/LogCapture.h")

    def test_back_edge_between_rooms_of_the_engine_is_found(self):
        self.tree(dme__Engine_h=header(), dme__jobs__JobTable_h=header(),
                  dme__store__ObjectStore_h=header('"dme/jobs/JobTable.h"'),
                  dme__apps__AppCatalog_h=header('"dme/Engine.h"'),
                  dme__link__MethodServer_h=header('"dme/jobs/JobTable.h"'),
                  dme__jobs__JobChecks_h=header('"dme/running/JobRunner.h"'),
                  dme__running__JobRunner_h=header('"dme/jobs/JobTable.h"'))
        self.assert_broken(
            "dme/apps/AppCatalog.h:3: dme/apps must not include dme/Engine.h",
            "dme/jobs/JobChecks.h:3: dme/jobs must not include dme/running/JobRunner.h",
            "dme/link/MethodServer.h:3: dme/link must not include dme/jobs/JobTable.h",
            "dme/store/ObjectStore.h:3: dme/store must not include dme/jobs/JobTable.h")

    def test_back_edge_between_rooms_of_the_simulator_is_found(self):
        self.tree(sma__Fleet_h=header(), sma__scenario__Scenario_h=header(),
                  sma__agent__BladeAgent_h=header('"sma/scenario/Scenario.h"'),
                  sma__base__Random_h=header('"sma/Fleet.h"'))
        self.assert_broken(
            "sma/agent/BladeAgent.h:3: sma/agent must not include sma/scenario/Scenario.h",
            "sma/base/Random.h:3: sma/base must not include sma/Fleet.h")

    def test_library_of_one_room_is_refused_in_another(self):
        self.tree(dme__jobs__JobTable_cpp=source("<sqlite3.h>"))
        self.assert_broken("dme/jobs/JobTable.cpp:1: dme/jobs must not use SQLite")

    def test_new_room_wants_a_place(self):
        self.tree(dme__attic__Old_h=header(), sma__attic__Old_h=header())
        self.assert_broken("dme/attic/Old.h:1: this folder stands in no layer",
                           "sma/attic/Old.h:1: this folder stands in no layer")

    def test_folder_outside_the_table_is_found(self):
        self.tree(framework__helpers__Strings_h=header(), main_cpp=source("<string>"),
                  serviceOrchAG__Loose_h=header())
        self.assert_broken("framework/helpers/Strings.h:1: this folder stands in no layer",
                           "main.cpp:1: this folder stands in no layer",
                           "serviceOrchAG/Loose.h:1: this folder stands in no layer")

    def test_build_and_hidden_folders_are_not_read(self):
        self.tree(build__x__Made_h="", )
        (self.root / ".cache").mkdir()
        (self.root / ".cache/Made.h").write_text("")
        self.assert_tidy()

    # --- libraries

    def test_library_outside_its_folder_is_refused(self):
        libraries = {"zmq.hpp": "libzmq", "pugixml.hpp": "pugixml", "spdlog/spdlog.h": "spdlog",
                     "toml++/toml.h": "toml++", "sqlite3.h": "SQLite",
                     "boost/asio.hpp": "Boost", "nlohmann/json.hpp": "nlohmann-json",
                     "curl/curl.h": "libcurl", "gtest/gtest.h": "GoogleTest"}
        for target, library in libraries.items():
            with self.subTest(library):
                self.tree(framework__finj__Manager_cpp=source(f"<{target}>"))
                self.assert_broken("framework/finj/Manager.cpp:1: framework/finj must not use "
                                   + library)

    def test_unknown_library_is_found(self):
        self.tree(dme__Engine_cpp=source("<vector>", "<expat.h>"))
        self.assert_broken("dme/Engine.cpp:2: <expat.h> belongs to no known library")

    # --- form

    def test_header_without_pragma_once_is_found(self):
        self.tree(dme__Engine_h="// #pragma once\n")
        self.assert_broken("dme/Engine.h:1: the header has no #pragma once")

    def test_own_header_second_is_found(self):
        self.tree(dme__Engine_h=header(), dme__Engine_cpp=source("<vector>", '"dme/Engine.h"'))
        self.assert_broken("dme/Engine.cpp:1: the file's own header is not its first include")

    def test_own_header_missing_is_found(self):
        self.tree(dme__Engine_h=header(), dme__Engine_cpp="int x;\n")
        self.assert_broken("dme/Engine.cpp:1: the file's own header is not its first include")

    def test_include_relative_to_the_file_is_found(self):
        self.tree(dme__Engine_h=header('"Job.h"', '"../model/Slot.h"'), dme__Job_h=header(),
                  model__Slot_h=header())
        self.assert_broken('dme/Engine.h:3: "Job.h" is not a path from the root',
                           'dme/Engine.h:4: "../model/Slot.h" is not a path from the root')

    def test_include_of_nothing_is_found(self):
        self.tree(dme__Engine_h=header('"dme/Gone.h"'))
        self.assert_broken('dme/Engine.h:3: there is no file "dme/Gone.h"')

    def test_project_header_in_angle_brackets_is_found(self):
        self.tree(dme__Engine_h=header("<dme/Job.h>"), dme__Job_h=header())
        self.assert_broken("dme/Engine.h:3: <dme/Job.h> is a header of this project")

    def test_include_in_a_comment_is_not_read(self):
        self.tree(dme__Engine_h='#pragma once\n/*\n#include "serviceOrchAG/svc/Svc.h"\n*/\n'
                                '// #include <zmq.h>\n#include <zmq.h>\n')
        self.assert_broken("dme/Engine.h:6: dme must not use libzmq")

    # --- circles

    def test_circle_of_two_files_is_found_once(self):
        self.tree(framework__mo__Mo_h=header("<string>", '"framework/meta/Meta.h"'),
                  framework__meta__Meta_h=header('"framework/mo/Mo.h"'))
        self.assert_broken(
            "framework/meta/Meta.h:3: circle of includes: framework/meta/Meta.h -> "
            "framework/mo/Mo.h -> framework/meta/Meta.h")

    def test_header_that_includes_itself_is_a_circle(self):
        self.tree(dme__Engine_h=header('"dme/Engine.h"'))
        self.assert_broken("dme/Engine.h:3: circle of includes: dme/Engine.h -> dme/Engine.h")

    def test_two_roads_to_one_header_are_no_circle(self):
        self.tree(dme__Engine_h=header('"dme/Job.h"', '"dme/Store.h"'),
                  dme__Job_h=header('"dme/Store.h"'), dme__Store_h=header())
        self.assert_tidy()


if __name__ == "__main__":
    unittest.main()
