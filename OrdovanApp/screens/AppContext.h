#pragma once

class AppSettings;
class Announcer;
class CommandCenter;
class Desktop;
class RuleStore;
class ThemeEnvironment;
class TidyViewModel;

/// What is made once at the start and handed down to every view.
struct AppContext {
    TidyViewModel& model;
    AppSettings& settings;
    RuleStore& rules;
    ThemeEnvironment& theme;
    CommandCenter& commands;
    Desktop& desktop;
    Announcer& announcer;
};
