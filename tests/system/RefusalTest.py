"""Requests that zedd refuses, and the exact words of each refusal."""

import harness
from RequestCase import RequestCase


class RefusalTest(RequestCase):
    # --- 500

    def test_unknown_command_is_refused_before_registration_is_asked_for(self):
        self.assert_refused(self.blade(1).request("serviceOrchAG.reboot", "<rebootRequest/>"),
                            "sma_slot1.reboot", "500", "rebootResponse", "Invalid Command")

    def test_known_command_with_foreign_action_is_unknown(self):
        self.assert_refused(self.blade(20).request("serviceOrchAG.heartbeat.get", ""),
                            "sma_slot20.heartbeat.get", "500", "heartbeatResponse",
                            "Invalid Command")

    def test_progress_without_action_is_unknown(self):
        self.assert_refused(self.blade(20).request("serviceOrchAG.commandProgress", ""),
                            "sma_slot20.commandProgress", "500", "commandProgressResponse",
                            "Invalid Command")

    def test_empty_command_is_unknown(self):
        self.assert_refused(self.blade(1).request("serviceOrchAG.", ""), "sma_slot1.", "500",
                            "Response", "Invalid Command")
        self.assert_refused(self.blade(1).request("serviceOrchAG..update", ""),
                            "sma_slot1..update", "500", "Response", "Invalid Command")

    def test_command_that_is_no_element_name_is_refused_with_an_empty_body(self):
        for command in ("<a>", "a b", "1st", 'x y="z"', "a\n"):
            with self.subTest(command):
                reply = self.blade(1).request(f"serviceOrchAG.{command}", "")
                self.assertEqual((reply.subject, reply.status, reply.body),
                                 (f"sma_slot1.{command}", "500", ""))

    def test_letter_case_counts(self):
        self.assertEqual(self.blade(20).request("serviceOrchAG.Heartbeat", "").status, "500")

    # --- 501

    def test_wrong_content_type_is_refused_and_echoed(self):
        for content_type in ("nox-xml:2", "NOX-XML:1", "nox-xml", "", "nox-xml:1 ", "nox-xml:1\0"):
            with self.subTest(content_type):
                reply = self.blade(20).request("serviceOrchAG.commandProgress.update", "",
                                               content_type=content_type)
                self.assert_refused(reply, "sma_slot20.commandProgress.update", "501",
                                    "commandProgressResponse",
                                    'Only content-type:version "nox-xml:1" is supported',
                                    content_type)

    def test_wrong_content_type_is_refused_whatever_the_identity(self):
        reply = self.blade(1).request("serviceOrchAG.reboot", "", identity="blade1",
                                      content_type="text:1")
        self.assert_refused(reply, "blade1.reboot", "501", "rebootResponse",
                            'Only content-type:version "nox-xml:1" is supported', "text:1")

    # --- 510

    def test_unregistered_slot_is_refused_with_its_number(self):
        self.assert_refused(self.blade(2).heartbeat(), "sma_slot2.heartbeat", "510",
                            "heartbeatResponse", "SMA is not register with slot 2")

    def test_slot_is_told_as_a_number_not_as_it_was_written(self):
        blade = self.blade(2)
        for identity, number in (("sma_slot02", "2"), ("sma_slot-1", "-1"), ("xsma_slot2", "2"),
                                 ("sma_slot2sma_slot9", "2")):
            with self.subTest(identity):
                reply = blade.request("serviceOrchAG.heartbeat", "", identity=identity)
                self.assert_refused(reply, identity + ".heartbeat", "510", "heartbeatResponse",
                                    "SMA is not register with slot " + number)

    def test_further_segments_of_the_subject_are_ignored(self):
        reply = self.blade(2).request("serviceOrchAG.platformInfo.update.extra", "")
        self.assert_refused(reply, "sma_slot2.platformInfo.update", "510", "platformInfoResponse",
                            "SMA is not register with slot 2")

    def test_empty_action_is_no_action(self):
        self.assert_refused(self.blade(2).request("serviceOrchAG.heartbeat.", ""),
                            "sma_slot2.heartbeat", "510", "heartbeatResponse",
                            "SMA is not register with slot 2")

    # --- 505

    def test_register_without_a_needed_tag_names_the_first(self):
        for missing, named in ((("bladeSlotId",), "bladeSlotId"), (("ip", "port"), "ip"),
                               (("port",), "port")):
            with self.subTest(missing):
                reply = self.blade(2).register(**dict.fromkeys(missing))
                self.assert_refused(reply, "sma_slot2.register", "505", "registerResponse",
                                    f"No <{named}> tag found in the register request")
                self.assertEqual([e.tag for e in reply.document], ["response"])

    def test_unreadable_document_lacks_every_tag(self):
        for body in ("", "<registerRequest>", "<other><bladeSlotId>2</bladeSlotId></other>",
                     '<!DOCTYPE r [<!ENTITY e "2">]><registerRequest><bladeSlotId>&e;'
                     "</bladeSlotId></registerRequest>", b"\xff\x00\xfe", "<" * 5000):
            with self.subTest(body[:40]):
                reply = self.blade(2).request("serviceOrchAG.register", body)
                self.assert_refused(reply, "sma_slot2.register", "505", "registerResponse",
                                    "No <bladeSlotId> tag found in the register request")

    # --- what is echoed

    def test_message_id_comes_back_byte_for_byte(self):
        blade = self.blade(2)
        for message_id in (b"", b"\x00\xff\n", b"7" * 300):
            with self.subTest(message_id):
                blade.send_parts("serviceOrchAG.heartbeat", "nox-xml:1", message_id, "sma_slot2",
                                 "")
                self.assertEqual(blade.receive().parts[2], message_id)


if __name__ == "__main__":
    harness.main()
