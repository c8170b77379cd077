"""Blades register at a running zedd, are known from then on, and beat."""

import unittest

import harness
from RequestCase import RequestCase


class RegistrationTest(RequestCase):
    def test_register_slot_without_token_is_told_to_come_again(self):
        reply = self.blade(1).register()
        self.assertEqual(reply.subject, "sma_slot1.register")
        self.assertEqual(reply.content_type, "nox-xml:1")
        self.assertEqual(reply.status, "510")
        self.assertEqual(reply.root, "registerResponse")
        self.assertEqual(reply.code, "510")
        self.assertEqual(reply.message, "ZED does not have token, please retry...")

    def test_register_again_is_accepted_and_told_the_token(self):
        blade = self.blade(2)
        blade.register()
        reply = blade.register()
        self.assertEqual((reply.status, reply.code, reply.message), ("100", "100", "OK"))
        self.assertEqual([element.tag for element in reply.document],
                         ["response", "token", "zedPubKey"])
        self.assertTrue(reply.text("token"))

    def test_register_with_the_slots_token_is_accepted(self):
        blade = self.blade(3)
        token = blade.register_validly()
        reply = blade.register(token=token)
        self.assertEqual((reply.status, reply.message), ("100", "OK"))
        self.assertEqual(reply.text("token"), token)

    def test_register_with_another_token_is_refused_until_the_right_one_comes(self):
        blade = self.blade(4)
        token = blade.register_validly()
        reply = blade.register(token=token + "x")
        self.assertEqual(reply.status, "511")
        self.assertEqual(reply.code, "511")
        self.assertEqual(reply.message, "failed to recognized blade in DME")

        beat = blade.heartbeat()
        self.assertEqual(beat.status, "511")
        self.assertEqual(beat.message, "Blade is not in valid state for slot 4")

        self.assertEqual(blade.register(token=token).status, "100")
        self.assertEqual(blade.heartbeat().status, "100")

    def test_two_slots_have_different_tokens(self):
        self.assertNotEqual(self.blade(5).register_validly(), self.blade(6).register_validly())

    def test_heartbeat_of_a_registered_blade_is_acknowledged(self):
        blade = self.blade(7)
        blade.register_validly()
        reply = blade.heartbeat(count=1, timer=10)
        self.assertEqual(reply.subject, "sma_slot7.heartbeat")
        self.assertEqual((reply.status, reply.root, reply.code, reply.message),
                         ("100", "heartbeatResponse", "100", "OK"))

    def test_heartbeat_without_numbers_is_acknowledged(self):
        blade = self.blade(8)
        blade.register_validly()
        for body in ("<heartbeatRequest/>", "", "no document",
                     "<heartbeatRequest><count>-1</count><timer>x</timer></heartbeatRequest>"):
            with self.subTest(body):
                reply = blade.request("serviceOrchAG.heartbeat", body)
                self.assertEqual((reply.status, reply.message), ("100", "OK"))

    def test_slot_is_taken_from_the_document_not_from_the_identity(self):
        blade = self.blade(9)
        blade.register(bladeSlotId=10)
        self.assertEqual(blade.register(bladeSlotId=10).status, "100")
        self.assertEqual(blade.heartbeat().message, "SMA is not register with slot 9")
        self.assertEqual(self.blade(10).heartbeat().status, "100")

    def test_two_agents_of_one_slot_each_get_their_own_reply(self):
        first, second = self.blade(14), self.blade(14)
        first.register_validly()
        for turn in range(20):
            sent = [(blade, blade.send("serviceOrchAG.heartbeat", "<heartbeatRequest/>",
                                       message_id=f"{name}-{turn}"))
                    for name, blade in (("first", first), ("second", second))]
            for blade, message_id in sent:
                self.assertEqual(blade.receive().message_id, message_id)

    def test_many_blades_at_once_each_get_their_own_reply(self):
        blades = [self.blade(slot) for slot in range(101, 165)]
        for blade in blades:
            blade.register_validly()
        sent = [(blade, blade.send("serviceOrchAG.heartbeat", "<heartbeatRequest/>"))
                for _ in range(5) for blade in blades]
        for blade, _ in sent[-len(blades):]:
            expected = {message_id for b, message_id in sent if b is blade}
            replies = [blade.receive() for _ in expected]
            self.assertEqual({r.message_id for r in replies}, expected)
            self.assertEqual({r.subject for r in replies}, {blade.identity + ".heartbeat"})
            self.assertFalse(blade.has_reply())


class RestartTest(unittest.TestCase):
    """What a zedd remembers of its blades when it starts again."""

    def setUp(self):
        self.zedd = self.enterContext(harness.Zedd())
        self.blade = self.enterContext(harness.Blade(3))

    def assert_token_is_remembered(self, token):
        self.zedd.start()
        self.assertEqual(self.blade.heartbeat().message, "SMA is not register with slot 3")
        self.assertEqual(self.blade.register(token=token + "x").status, "511")
        reply = self.blade.register(token=token)
        self.assertEqual((reply.status, reply.text("token")), ("100", token))

    def test_token_outlives_an_orderly_restart(self):
        token = self.blade.register_validly()
        self.assertEqual(self.zedd.stop(), 0)
        self.assert_token_is_remembered(token)

    def test_token_outlives_a_kill_right_after_the_reply(self):
        token = self.blade.register_validly()
        self.zedd.kill()
        self.assert_token_is_remembered(token)

    def test_token_told_with_the_first_reply_outlives_a_kill(self):
        self.blade.register()
        self.zedd.kill()
        self.zedd.start()
        self.assertEqual(self.blade.register().status, "100")


class SettingsTest(unittest.TestCase):
    def test_right_supervisor_serves_its_own_end_point(self):
        self.enterContext(harness.Zedd({"supervisor.self_id": 2}))
        blade = self.enterContext(harness.Blade(1, harness.RIGHT_END_POINT))
        self.assertEqual(blade.heartbeat().status, "510")

    def test_host_key_is_the_last_line_of_its_file(self):
        zedd = self.enterContext(harness.Zedd())
        zedd.stop()
        key = zedd.folder / "host.pub"
        key.write_text("first\nsecond\nssh-rsa AAAA <root> & co\n")
        zedd = self.enterContext(harness.Zedd({"supervisor.host_key": str(key)}))
        blade = self.enterContext(harness.Blade(1))
        self.assertEqual(blade.register().text("zedPubKey"), "ssh-rsa AAAA <root> & co")
        key.unlink()
        self.assertEqual(blade.register().text("zedPubKey"), "")


if __name__ == "__main__":
    harness.main()
