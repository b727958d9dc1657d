#include "server/Cvn73100Server.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>

#include "platform/AtomicFile.h"
#include "platform/Components.h"
#include "server/BlockReader.h"
#include "server/ImageHeader.h"
#include "server/ScpiText.h"
#include "server/ServerError.h"
#include "server/SubObjects.h"

namespace cvn73100::server {
namespace {

constexpr Cvn73100_WaveformPoints kPoints[] = {Cvn73100_DataPoints_ALL,  Cvn73100_DataPoints_100,
                                               Cvn73100_DataPoints_250,  Cvn73100_DataPoints_500,
                                               Cvn73100_DataPoints_1000, Cvn73100_DataPoints_2000};
constexpr int FORMAT_BYTE = 0;
constexpr int FORMAT_WORD = 1;
constexpr int FORMAT_ASCII = 4;

// The ten fields of ":WAVeform:PREamble?": format, type, points, count, then x increment, origin and
// reference, then y increment, origin and reference. A sample i lies at
// x origin + (i - x reference) * x increment, and a code c reads (c - y reference) * y increment + y origin.
struct Preamble {
  int format = 0;
  int points = 0;
  double xIncrement = 0, xOrigin = 0, xReference = 0;
  double yIncrement = 0, yOrigin = 0, yReference = 0;

  double Time(std::size_t i) const { return xOrigin + (static_cast<double>(i) - xReference) * xIncrement; }
  double Value(double code) const { return (code - yReference) * yIncrement + yOrigin; }

  static Preamble Parse(const std::string& reply) {
    double fields[10];
    std::size_t start = 0;
    for (std::size_t i = 0; i < 10; ++i) {
      const std::size_t comma = reply.find(',', start);
      if ((comma == std::string::npos) != (i == 9)) {
        throw ServerError(SERVERERR_BAD_REPLY, "a waveform preamble without ten fields");
      }
      fields[i] = ScpiChannel::ParseReal(reply.substr(start, comma == std::string::npos ? comma : comma - start));
      start = comma + 1;
    }
    Preamble p;
    p.format = static_cast<int>(fields[0]);
    const double points = fields[2];
    if (points < 0 || points > static_cast<double>(BlockReader::WAVEFORM_CAP)) {
      throw ServerError(SERVERERR_BAD_REPLY, "a waveform preamble of " + scpi::Real(points) + " points");
    }
    p.points = static_cast<int>(points);
    p.xIncrement = fields[4];
    p.xOrigin = fields[5];
    p.xReference = fields[6];
    p.yIncrement = fields[7];
    p.yOrigin = fields[8];
    p.yReference = fields[9];
    return p;
  }
};

struct Record {
  Preamble preamble;
  std::vector<double> codes;  // one per point; the preamble turns them into volts or logic words
};

// The codes of a WORD (most significant byte first), BYTE or ASCii block.
std::vector<double> Codes(const Bytes& data, int format) {
  std::vector<double> codes;
  if (format == FORMAT_ASCII) {
    std::size_t start = 0;
    const std::string text(data.begin(), data.end());
    while (start < text.size()) {
      const std::size_t comma = std::min(text.find(',', start), text.size());
      codes.push_back(ScpiChannel::ParseReal(text.substr(start, comma - start)));
      start = comma + 1;
    }
    return codes;
  }
  const std::size_t width = format == FORMAT_WORD ? 2 : 1;
  codes.reserve(data.size() / width);
  for (std::size_t i = 0; i + width <= data.size(); i += width) {
    codes.push_back(width == 2 ? static_cast<double>(data[i] << 8 | data[i + 1]) : data[i]);
  }
  return codes;
}

std::string PointsArgument(Cvn73100_WaveformPoints points) {
  const std::string number = scpi::Argument<Cvn73100_WaveformPoints>(points, kPoints, "waveform points");
  return points == Cvn73100_DataPoints_ALL ? "MAXimum" : number;
}

// Selects `source` and fetches its preamble and data in `format`; a line with XON/XOFF flow control would take
// the bytes 0x11 and 0x13 of a binary record for flow control, so there the record comes as ASCII numbers.
Record FetchRecord(ScpiChannel& channel, const std::string& source, Cvn73100_WaveformPoints points, int format) {
  if (channel.UsesSoftwareFlowControl()) format = FORMAT_ASCII;
  const char* formatName = format == FORMAT_ASCII ? "ASCii" : format == FORMAT_WORD ? "WORD" : "BYTE";
  channel.Set(":WAVeform:SOURce " + source + ";:WAVeform:FORMat " + formatName + ";:WAVeform:POINts " +
              PointsArgument(points));
  Record record;
  record.preamble = Preamble::Parse(channel.Query(":WAVeform:PREamble?"));
  if (record.preamble.format != format) throw ServerError(SERVERERR_BAD_REPLY, "waveform format not as asked");
  // A binary record's length follows from the preamble; ASCII numbers have no fixed width.
  std::optional<std::size_t> expected;
  if (format != FORMAT_ASCII) {
    expected = static_cast<std::size_t>(record.preamble.points) * (format == FORMAT_WORD ? 2 : 1);
  }
  const Bytes data = channel.QueryBlock(":WAVeform:DATA?", BlockReader::WAVEFORM_CAP, expected);
  record.codes = Codes(data, format);
  if (record.codes.size() != static_cast<std::size_t>(record.preamble.points)) {
    throw ServerError(SERVERERR_BAD_REPLY, std::to_string(data.size()) + " bytes of waveform data for " +
                                               std::to_string(record.preamble.points) + " points");
  }
  return record;
}

}  // namespace

Cvn73100Server::Cvn73100Server(std::shared_ptr<IIOManager> ioManager)
    : m_acquisition(MakeAcquisition(m_channel)),
      m_analogChannels(MakeAnalogChannels(m_channel)),
      m_logicChannel(MakeLogicChannel(m_channel)),
      m_measure(MakeMeasure(m_channel)),
      m_timebase(MakeTimebase(m_channel)),
      m_trigger(MakeTrigger(m_channel)),
      m_trace(MakeTrace(m_channel)) {
  m_channel.SetIOManager(std::move(ioManager));
}

Cvn73100Server::~Cvn73100Server() {
  try {
    m_channel.Close();
  } catch (const std::exception&) {
    // A port that cannot be closed any more has nothing left to release.
  }
}

void Cvn73100Server::OpenConnection(const std::string& address, std::int32_t) {
  m_utilities.Forget();
  m_channel.Open(address);
}

void Cvn73100Server::CloseConnection() {
  m_utilities.Forget();
  m_channel.Close();
}

std::string Cvn73100Server::ConnectionName() { return m_channel.Address(); }

void Cvn73100Server::SetIOManager(std::shared_ptr<IIOManager> ioManager) {
  m_channel.SetIOManager(std::move(ioManager));
}

// Autoscale and digitize may take longer than a reply is waited for, so they are not followed by the error
// query; the next checked command reports what they left in the queue.
void Cvn73100Server::AutoScale() { m_channel.Write(":AUToscale"); }
void Cvn73100Server::Digitize() { m_channel.Write(":DIGitize"); }
void Cvn73100Server::Run() { m_channel.Set(":RUN"); }
void Cvn73100Server::SingleTrigger() { m_channel.Set(":SINGle"); }
void Cvn73100Server::StopTrigger() { m_channel.Set(":STOP"); }

void Cvn73100Server::Output(const Variant& outputBuffer) {
  IInstrumentIO& io = m_channel.ForWriting();
  if (outputBuffer.GetType() == Variant::Type::ByteArray) {
    const Bytes& bytes = outputBuffer.AsBytes();
    io.WriteBytes(static_cast<std::int32_t>(bytes.size()), bytes);
  } else {
    io.Output(outputBuffer.AsString());
  }
}

void Cvn73100Server::Enter(Variant& inputBuffer, const Variant& format) {
  const std::string image = format.IsEmpty() ? std::string("K") : format.AsString();
  if (image == "B" || image == "b") {
    inputBuffer = Variant(m_channel.ReadBlock(BlockReader::WAVEFORM_CAP));
    return;
  }
  std::string reply;
  m_channel.Enter(reply, image);
  inputBuffer = Variant(std::move(reply));
}

void Cvn73100Server::ReadBytes(std::int32_t& count, Bytes& buffer) {
  if (count < 0 || count > MAX_READ_BYTES) {
    throw ServerError(SERVERERR_BAD_ARGUMENT, "byte count " + std::to_string(count));
  }
  count = m_channel.ReadBytes(count, buffer);
}

void Cvn73100Server::WriteBytes(std::int32_t count, Bytes& buffer) {
  if (count < 0 || static_cast<std::size_t>(count) > buffer.size()) {
    throw ServerError(SERVERERR_BAD_ARGUMENT,
                      "byte count " + std::to_string(count) + " for " + std::to_string(buffer.size()) + " bytes");
  }
  m_channel.ForWriting().WriteBytes(count, buffer);
}

void Cvn73100Server::GetWaveformData(Cvn73100_AnalogChannels channel, Cvn73100_WaveformPoints points, Variant& time,
                                     Variant& data) {
  // An instrument refuses the record of a channel that is off without a reply; asking first saves the wait.
  const std::string node = scpi::ChannelNode(channel);
  if (!m_channel.QueryBoolean(node + ":DISPlay?")) {
    throw ServerError(SERVERERR_UNSUPPORTED,
                      "channel " + std::to_string(channel) + " is off; switch it on before reading its waveform");
  }
  const Record record = FetchRecord(m_channel, node.substr(1), points, FORMAT_WORD);
  const auto n = static_cast<std::size_t>(record.preamble.points);
  Variant::Doubles seconds(n);
  Variant::Doubles volts(n);
  for (std::size_t i = 0; i < n; ++i) {
    seconds[i] = record.preamble.Time(i);
    volts[i] = record.preamble.Value(record.codes[i]);
  }
  time = Variant(std::move(seconds));
  data = Variant(std::move(volts));
}

void Cvn73100Server::GetAllWaveformData(Cvn73100_WaveformPoints points, Variant::Array& data) {
  Variant::Array all;
  for (std::int32_t channel = Cvn73100_Channel_1; channel <= Cvn73100_Channel_4; ++channel) {
    Variant time;
    Variant volts;
    GetWaveformData(static_cast<Cvn73100_AnalogChannels>(channel), points, time, volts);
    all.emplace_back(Variant::Array{std::move(time), std::move(volts)});
  }
  data = std::move(all);
}

void Cvn73100Server::GetLogicData(Cvn73100_WaveformPoints points, Variant& time, Variant& data) {
  const Record low = FetchRecord(m_channel, "POD1", points, FORMAT_BYTE);
  const Record high = FetchRecord(m_channel, "POD2", points, FORMAT_BYTE);
  if (low.preamble.points != high.preamble.points) {
    throw ServerError(SERVERERR_BAD_REPLY, "the two logic pods sent records of different lengths");
  }
  const auto n = static_cast<std::size_t>(low.preamble.points);
  Variant::Doubles seconds(n);
  Variant::Array words(n);
  for (std::size_t i = 0; i < n; ++i) {
    seconds[i] = low.preamble.Time(i);
    words[i] = Variant(static_cast<std::int32_t>(high.codes[i]) << 8 | static_cast<std::int32_t>(low.codes[i]));
  }
  time = Variant(std::move(seconds));
  data = Variant(std::move(words));
}

Picture Cvn73100Server::GetScreenImage(Cvn73100_ImageFormat format) {
  const std::string keyword = ImageHeader::Keyword(format);
  m_channel.RequireBinarySafeLine("screen images");
  Picture picture;
  picture.format = format;
  try {
    picture.data = m_channel.QueryBlock(":DISPlay:DATA? " + keyword, BlockReader::IMAGE_CAP);
  } catch (const ScopeError& error) {
    if (ServerErrorCondition(error) != SERVERERR_INSTRUMENT) throw;
    throw ServerError(SERVERERR_UNSUPPORTED, std::string("the instrument does not send ") + keyword +
                                                 " screen images: " + error.Description());
  }
  const ImageHeader header = ImageHeader::Read(format, picture.data);
  picture.mimeType = header.mimeType;
  picture.width = header.width;
  picture.height = header.height;
  return picture;
}

void Cvn73100Server::SaveScreenImage(const std::string& fileName, Cvn73100_ImageFormat format) {
  if (fileName.empty()) throw ServerError(SERVERERR_BAD_ARGUMENT, "no file name");
  const Picture picture = GetScreenImage(format);
  try {
    ReplaceFileAtomically(fileName,
                          {std::string_view(reinterpret_cast<const char*>(picture.data.data()), picture.data.size())});
  } catch (const AtomicFileError& error) {
    throw ServerError(SERVERERR_FILE, error.what());
  }
}

void RegisterAutomationServer() {
  Components::SetServerFactory(
      [](std::shared_ptr<IIOManager> ioManager) { return std::make_unique<Cvn73100Server>(std::move(ioManager)); });
}

}  // namespace cvn73100::server
