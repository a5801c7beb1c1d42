// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "tessel/json.h"

#ifdef TESSEL_BENCH_NLOHMANN
#include <nlohmann/json.hpp>
#endif
#ifdef TESSEL_BENCH_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif
#ifdef TESSEL_BENCH_BOOST_JSON
#include <boost/json.hpp>
#endif
#ifdef TESSEL_BENCH_JSONCPP
#include <json/json.h>
#endif

// Each library with its defaults: JSON text to a document that owns all it holds, and back to compact text.

struct Tessel {
  static constexpr const char* kName = "Tessel";
  static json::Value Parse(const std::string& text) { return json::Deserialize(text); }
  static std::string Write(const json::Value& document) { return json::Serialize(document); }
};

#ifdef TESSEL_BENCH_NLOHMANN
struct Nlohmann {
  static constexpr const char* kName = "Nlohmann";
  static nlohmann::json Parse(const std::string& text) { return nlohmann::json::parse(text); }
  static std::string Write(const nlohmann::json& document) { return document.dump(); }
};
#endif

#ifdef TESSEL_BENCH_RAPIDJSON
struct RapidJson {
  static constexpr const char* kName = "RapidJson";
  static rapidjson::Document Parse(const std::string& text) {
    rapidjson::Document document;
    document.Parse(text.data(), text.size());
    return document;
  }
  static std::string Write(const rapidjson::Document& document) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer writer(buffer);
    document.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
  }
};
#endif

#ifdef TESSEL_BENCH_BOOST_JSON
struct BoostJson {
  static constexpr const char* kName = "BoostJson";
  static boost::json::value Parse(const std::string& text) { return boost::json::parse(text); }
  static std::string Write(const boost::json::value& document) { return boost::json::serialize(document); }
};
#endif

#ifdef TESSEL_BENCH_JSONCPP
struct JsonCpp {
  static constexpr const char* kName = "JsonCpp";
  static Json::Value Parse(const std::string& text) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value document;
    reader->parse(text.data(), text.data() + text.size(), &document, nullptr);
    return document;
  }
  static std::string Write(const Json::Value& document) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, document);
  }
};
#endif
