#pragma once

namespace supervisor::admin {

/// The description of an application instance with every part that there is and every member.
inline constexpr const char* kFullApp = R"({
  "id": "fw.1_a:b-2", "slot": 3, "version": "1.2", "mgmtBootstrapVersion": "2.1",
  "app": {"packageFile": "/p/fw-1.2.pkg", "reqDataHdd": 20, "deployType": "lxc",
          "installTimeout": 60, "uninstallTimeout": 61, "upgradeTimeout": 62, "vdp": true},
  "resource": {"reqCpuCores": 6, "maxAllowedRam": 32768, "reqDataHdd": 40960,
               "reqSecDataHdd": 10240},
  "ldu": {"name": "ldu-1", "links": [
      {"portName": "Management0", "linkInterfaceType": "mgmt", "mgmtSubType": "events", "vlan": 0,
       "bladeVnic1": "1:10", "bladeVnic2": "2:0", "systemMac": "00:11:22:33:aa:bb",
       "hasMac": true},
      {"portName": "Port-channel48", "linkInterfaceType": "cluster", "vlan": 4048,
       "bladeVnic1": "1:48", "bladeVnic2": "2:49",
       "ip": {"address": "10.99.1.3", "netmask": "255.255.0.0", "gateway": "0.0.0.0"}}],
    "appLinks": [{"name": "chain", "bladeVnic1": "1:2", "bladeVnic2": "2:30"}]},
  "clusterBootstrap": {"ipv4PoolStart": "192.0.2.10", "ipv4PoolEnd": "192.0.2.19",
      "ipv4VirtIP": "192.0.2.9", "ipv4Netmask": "255.255.255.0", "ipv4Gateway": "192.0.2.1",
      "ipv6PoolStart": "2001:db8::a", "ipv6PoolEnd": "2001:db8::13", "ipv6VirtIP": "2001:db8::9",
      "ipv6PrefixLength": 64, "ipv6Gateway": "::"},
  "internalMgmtBootstrap": {"bladeVnic": "2:60",
      "ip": {"address": "203.0.113.3", "netmask": "255.255.255.0", "gateway": "203.0.113.1"},
      "systemMac": {"mac": "00:aa:bb:cc:dd:ee"}},
  "mgmtBootstrap": {
      "ip": {"address": "198.51.100.7", "netmask": "255.255.255.128", "gateway": "198.51.100.1"},
      "ipv6": {"address": "2001:db8:1::7", "prefixLength": 48, "gateway": "2001:db8:1::1"}},
  "netMgmtBootstraps": [{"key": "dns", "value": "192.0.2.53"}, {"key": "domain", "value": ""}]
})";

}  // namespace supervisor::admin
