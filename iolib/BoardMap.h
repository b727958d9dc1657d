#pragma once
#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace cvn73100::io {

// What stands behind the port names COM1..COM4 and GPIB0..GPIB3 on this computer.
//
// Sources, later ones winning: the embedded default, the config file, the environment.
// - Embedded default (used when no config file exists): COMn is /dev/ttyS(n-1), GPIB0 is the simulated bus,
//   GPIB1..GPIB3 are not mapped.
// - Config file: $CVN73100_IO_CONF, else $XDG_CONFIG_HOME/cvn73100/io.conf, else ~/.config/cvn73100/io.conf.
//   When it exists it replaces the embedded default: ports it does not name are COMn -> /dev/ttyS(n-1) and
//   GPIBn -> not mapped. Lines are `KEY = VALUE`; '#' or ';' starts a comment line; [sections] are ignored.
//   Keys (any case): COM1..COM4, GPIB0..GPIB3, LIBGPIB.
//     COMn  = /absolute/device/node | rfc2217:HOST:PORT | tcp:HOST:PORT | sim | none
//     GPIBn = linux-gpib[:BOARD] | prologix-serial:/absolute/node | prologix-tcp:HOST[:PORT]
//             | vxi11:HOST[:PORT][/INTERFACE] | sim | none
//   rfc2217 is a serial device server with the Telnet com-port option (line settings set from here); tcp is a raw
//   socket to one (settings fixed at the server). vxi11 is a LAN/GPIB gateway: INTERFACE defaults to gpib0, the
//   core channel's PORT to the one the host's portmapper gives. HOST may be [IPv6].
//     GPIBn.ADDR = vxi11:HOST[:PORT]/DEVICE | socket:HOST:PORT
//   An instrument with a LAN port of its own stands in for address ADDR (0..30) of board n, whatever the board
//   is: its VXI-11 device (DEVICE such as inst0) or its raw SCPI socket (such as port 5025).
//     LIBGPIB = path of the linux-gpib library to load (default libgpib.so.0)
// - Environment: CVN73100_COM1..4 and CVN73100_GPIB0..3 take a value as above; CVN73100_LIBGPIB a library path.
// A line or variable that does not parse is skipped and reported in Problems().
class BoardMap {
 public:
  static constexpr int kFirstCom = 1;
  static constexpr int kLastCom = 4;
  static constexpr int kFirstGpib = 0;
  static constexpr int kLastGpib = 3;
  static constexpr int kPrologixTcpPort = 1234;
  static constexpr const char* kDefaultLibGpib = "libgpib.so.0";

  enum class ComKind { None, Node, Simulated, Rfc2217, RawTcp };
  struct ComTarget {
    ComKind kind = ComKind::None;
    std::string node;    // device node for Node
    std::string origin;  // where the entry came from: "default", "file:LINE", "env"
    std::string host{};  // serial device server for Rfc2217 and RawTcp
    int port = 0;
    bool operator==(const ComTarget& other) const {
      return kind == other.kind && node == other.node && host == other.host && port == other.port;
    }
  };

  enum class GpibKind { None, LinuxGpib, PrologixSerial, PrologixTcp, Simulated, Vxi11, Socket };
  struct GpibTarget {
    GpibKind kind = GpibKind::None;
    int board = 0;                // linux-gpib board index (0..15)
    std::string node;             // serial node of a Prologix adapter on USB
    std::string host;             // TCP host of a Prologix adapter on Ethernet or of a VXI-11 gateway
    int port = kPrologixTcpPort;  // for a VXI-11 gateway 0: ask its portmapper
    std::string interfaceName;    // a VXI-11 gateway's GPIB interface ("gpib0"), or a LAN instrument's device
    std::string origin;
    bool operator==(const GpibTarget& other) const {
      return kind == other.kind && board == other.board && node == other.node && host == other.host &&
             port == other.port && interfaceName == other.interfaceName;
    }
  };

  // Looks up an environment variable; nullopt when unset.
  using Environment = std::function<std::optional<std::string>(const std::string& name)>;
  // Reads a whole file; nullopt when it does not exist or cannot be read.
  using FileReader = std::function<std::optional<std::string>(const std::string& path)>;

  // The embedded default alone.
  static BoardMap EmbeddedDefault();
  // The board map of this process: config file and environment as described above.
  static BoardMap Load();
  static BoardMap Load(const Environment& environment, const FileReader& readFile);
  // A map from config text alone (ports not named take the file defaults); `origin` names the text in Problems().
  static BoardMap FromText(const std::string& text, const std::string& origin = "config");

  // Parses one value; nullopt (and `error` set) when it does not parse. `index` is the port's own number.
  static std::optional<ComTarget> ParseComValue(const std::string& value, std::string& error);
  static std::optional<GpibTarget> ParseGpibValue(const std::string& value, int index, std::string& error);
  // A LAN instrument for GPIBn.ADDR: vxi11:HOST[:PORT]/DEVICE or socket:HOST:PORT.
  static std::optional<GpibTarget> ParseStandInValue(const std::string& value, std::string& error);
  static std::string DescribeCom(const ComTarget& target);
  static std::string DescribeGpib(const GpibTarget& target);

  const ComTarget& Com(int port) const;     // port 1..4
  const GpibTarget& Gpib(int board) const;  // board 0..3
  // The LAN instrument standing in for an address of a board (Vxi11 or Socket), or nullptr.
  const GpibTarget* StandIn(int board, int address) const;
  const std::map<std::pair<int, int>, GpibTarget>& StandIns() const { return m_standIns; }
  void SetCom(int port, ComTarget target);
  void SetGpib(int board, GpibTarget target);
  const std::string& LibGpibPath() const { return m_libGpib; }

  // True when no config file was found and GPIB0 is still the embedded simulated bus.
  bool UsingEmbeddedDefault() const;
  // The config file looked for and whether it was read.
  const std::string& ConfigPath() const { return m_configPath; }
  bool ConfigFound() const { return m_configFound; }
  const std::vector<std::string>& Problems() const { return m_problems; }
  // Several lines for people: where the map came from, each port and what stands behind it, and any problems.
  std::string Describe() const;

 private:
  static BoardMap FileDefaults();
  void ApplyText(const std::string& text, const std::string& origin);
  bool ApplySetting(const std::string& key, const std::string& value, const std::string& origin);

  std::array<ComTarget, 4> m_com;
  std::array<GpibTarget, 4> m_gpib;
  std::map<std::pair<int, int>, GpibTarget> m_standIns;  // (board, address) -> LAN instrument
  std::string m_libGpib = kDefaultLibGpib;
  std::string m_libGpibOrigin = "default";
  std::string m_configPath;
  bool m_configFound = false;
  bool m_embedded = false;
  std::vector<std::string> m_problems;
};

}  // namespace cvn73100::io
