"""on_board.py: the module on a board, which a virtual board gives to this process. It has one switch
and two PHYs; the switch and the first PHY are up."""

import ctypes
import subprocess
import unittest

import orblink
from orblink import layouts, records
from orblink.library import call


def learn():
    """A station speaks behind port 1."""
    subprocess.run(["orblink-vboard", "control", "learn", "sw0:1", "00:00:5e:00:53:01", "1"],
                   check=True)


class Switches(unittest.TestCase):
    def setUp(self):
        self.switch = orblink.Switch(0)

    def test_are_counted(self):
        self.assertEqual([switch.index for switch in orblink.switches()], [0])
        self.assertEqual(len(self.switch.ports()), 8)
        self.assertEqual(orblink.read_all().NumOfSwitches, 1)
        self.assertEqual(orblink.map_region().NumOfSwitches, 1)

    def test_settings_are_stored_and_read_back(self):
        port = self.switch.port(2)
        port.set_vlan(100)
        port.set_pcp(5)
        port.set_tagging(1)
        port.set_group(3, orblink.GroupLock.UNLOCK)
        port.set_mirror(3)
        config = self.switch.config()
        self.assertEqual((config.lanPortVlan[2], config.lanPortPcp[2], config.egressTagging[2],
                          config.groupId[2], config.mirrorDst[2]), (100, 5, 1, 3, 3))
        port.set_mirror(orblink.NO_PORT)
        self.assertEqual(self.switch.config().mirrorDst[2], orblink.NO_PORT)

    def test_ports_go_down_and_up(self):
        port = self.switch.port(1)
        self.assertEqual(port.link(), orblink.Link(True, orblink.Speed.S1G, True))
        port.disable()
        self.assertFalse(port.is_enabled())
        self.assertFalse(port.link().up)
        port.enable()
        self.assertTrue(port.is_enabled())
        port.set_eee(False)
        self.assertEqual(port.eee(), 0)
        port.set_eee(True)
        self.assertEqual(port.eee(), 1)

    def test_registers_are_16_bits(self):
        self.switch.set_mtu(1600)
        self.assertEqual(self.switch.config().mtuSize, 1600)
        self.switch.port(2).set_vlan(77)
        self.assertEqual(self.switch.read_port_register(2, 3), 77)
        self.switch.write_port_register(2, 3, 78)
        self.assertEqual(self.switch.read_port_register(2, 3), 78)
        self.switch.set_aging(5)
        self.assertEqual(self.switch.read_register(0x113) & 7, 5)

    def test_counters_have_their_layout(self):
        counters = self.switch.port(2).counters(layouts.VswitchPortCounters)
        self.assertEqual(counters.etherStatsPkts, 5)
        self.switch.port(2).reset_counters()
        self.assertEqual(self.switch.port(2).counters(layouts.VswitchPortCounters).etherStatsPkts,
                         0)

    def test_stations_are_listed(self):
        learn()
        entries, more = self.switch.mac_table(layouts.VswitchMacEntry)
        self.assertEqual([bytes(entry.mac).hex() for entry in entries], ["00005e005301"])
        self.assertFalse(more)
        seen = []
        self.switch.for_each_mac_entry(lambda entry: bool(seen.append(bytes(entry.data[:6]))))
        self.assertEqual(seen, [bytes.fromhex("00005e005301")])

    def test_an_exception_ends_the_walk_and_frees_the_lock(self):
        def refuse(entry):
            raise KeyError(entry.data[0])
        learn()
        with self.assertRaises(KeyError):
            self.switch.for_each_mac_entry(refuse)
        self.assertEqual(len(orblink.switches()), 1)

    def test_stations_are_mapped_to_vlans(self):
        self.switch.port(2).map_station("02:00:00:00:00:09", 55)
        self.assertEqual([(entry.VlanId, entry.LogPort) for entry in self.switch.mac_vlan_table()],
                         [(55, 2)])
        self.switch.port(2).map_station("02:00:00:00:00:09", 55, add=False)
        self.assertEqual(self.switch.mac_vlan_table(), [])

    def test_the_rest_of_the_settings_reaches_the_chip(self):
        switch, port = self.switch, self.switch.port(4)
        switch.set_snooping(True)
        switch.set_snooping(False)
        switch.set_provider_bridging(0x88A8)
        self.assertEqual(switch.config().STagTpid, 0x88A8)
        switch.set_provider_bridging(None)
        switch.set_led_mode(4)
        self.assertEqual(switch.led_mode(), 4)
        switch.set_queue_wred(1, [1, 2, 1, 2, 1, 2])
        switch.set_global_wred(0, 4, 100, [4095] * 6)
        switch.reserve_queue(1, 2)
        port.set_flow_control(200, 100)
        port.set_test_mode(1)
        self.assertEqual(port.test_mode(), 1)
        port.set_test_mode(0)
        port.start_dvt(3)
        port.end_dvt()
        switch.port(7).set_rgmii_delay(False)
        switch.port(7).set_rgmii_delay(True)
        port.set_speed(orblink.Speed.S100M)
        self.assertEqual(switch.config().link[4].linkSpeed, orblink.Speed.S100M)
        switch.set_service(7)
        self.assertEqual(switch.service(), 7)
        self.assertIn(switch.is_isolated(), (True, False))
        self.assertFalse(orblink.is_battery_mode())

    def test_switch_in_reset_is_not_reachable(self):
        self.switch.down()
        with self.assertRaises(orblink.Error) as refused:
            self.switch.port(1).link()
        self.assertEqual(refused.exception.function, "ORBLINK_GetPortLink")
        self.switch.up()
        self.assertTrue(self.switch.port(1).is_enabled())

    def test_numbers_are_not_cut(self):
        for wrong in (-1, 256):
            with self.assertRaises(ValueError):
                self.switch.port(wrong).link()
        with self.assertRaises(orblink.Error):
            self.switch.port(8).link()
        with self.assertRaises(orblink.Error):
            self.switch.port(2).set_vlan(4095)
        with self.assertRaises(TypeError):
            call("ORBLINK_ResetEnable")


class Phys(unittest.TestCase):
    def test_are_counted_and_read(self):
        phy, other = orblink.phys()
        self.assertEqual((phy.index, other.index, orblink.map_phy_region().NumOfPhys), (0, 1, 2))
        self.assertTrue(phy.board().halLibName.startswith(b"lib"))
        self.assertEqual(phy.config().adminState, phy.record().config.adminState)
        self.assertNotEqual(phy.caps(), 0)
        self.assertEqual(phy.read(2), phy.read_chip(2))

    def test_settings_reach_the_phy(self):
        phy = orblink.Phy(0)
        phy.enable(False)
        self.assertEqual(phy.config().adminState, 0)
        self.assertFalse(phy.link().up)
        phy.enable()
        phy.write(4, 0x01E1)
        self.assertEqual(phy.read(4), 0x01E1)
        phy.write_mmd(7, 32, 0)
        self.assertEqual(phy.read_mmd(7, 32), 0)
        phy.poll()
        phy.reset_counters()
        self.assertEqual(phy.counters(layouts.EthphyIeee8023Counters).linkDrops, 0)
        phy.reset_lane()
        phy.down()
        with self.assertRaises(orblink.Error):
            phy.read(2)
        phy.up()


class Records(unittest.TestCase):
    def test_functions_have_types(self):
        self.assertIs(orblink.library.library().ORBLINK_ResetEnable.restype, ctypes.c_int)
        self.assertEqual(ctypes.sizeof(records.SwitchDeviceRegion), 5740)


if __name__ == "__main__":
    unittest.main(verbosity=2)
