<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name></name>
    <message id="material-oak.name">
        <source></source>
        <translation>Oak</translation>
    </message>
    <message id="material-oak.description">
        <source></source>
        <translation>Oiled oak with a clear grain.</translation>
    </message>
    <message id="material-walnut.name">
        <source></source>
        <translation>Walnut</translation>
    </message>
    <message id="material-walnut.description">
        <source></source>
        <translation>Dark walnut under a satin varnish.</translation>
    </message>
    <message id="material-brass.name">
        <source></source>
        <translation>Brass</translation>
    </message>
    <message id="material-brass.description">
        <source></source>
        <translation>Brushed brass, warm and bright.</translation>
    </message>
    <message id="material-steel.name">
        <source></source>
        <translation>Steel</translation>
    </message>
    <message id="material-steel.description">
        <source></source>
        <translation>Cold steel with the marks of the brush.</translation>
    </message>
    <message id="material-marble.name">
        <source></source>
        <translation>Marble</translation>
    </message>
    <message id="material-marble.description">
        <source></source>
        <translation>White marble with grey veins.</translation>
    </message>
    <message id="material-concrete.name">
        <source></source>
        <translation>Concrete</translation>
    </message>
    <message id="material-concrete.description">
        <source></source>
        <translation>Raw concrete with small pores.</translation>
    </message>
    <message id="material-linen.name">
        <source></source>
        <translation>Linen</translation>
    </message>
    <message id="material-linen.description">
        <source></source>
        <translation>Plain woven linen in its natural colour.</translation>
    </message>
    <message id="material-wool.name">
        <source></source>
        <translation>Wool</translation>
    </message>
    <message id="material-wool.description">
        <source></source>
        <translation>Coarse knitted wool.</translation>
    </message>
    <message id="material-leather.name">
        <source></source>
        <translation>Leather</translation>
    </message>
    <message id="material-leather.description">
        <source></source>
        <translation>Brown leather that has seen some years.</translation>
    </message>
    <message id="material-glass.name">
        <source></source>
        <translation>Glass</translation>
    </message>
    <message id="material-glass.description">
        <source></source>
        <translation>Clear glass with a blue edge.</translation>
    </message>
    <message id="sound-rain.name">
        <source></source>
        <translation>Rain on a window</translation>
    </message>
    <message id="sound-rain.description">
        <source></source>
        <translation>Steady rain. Loops without a gap.</translation>
    </message>
    <message id="sound-wind.name">
        <source></source>
        <translation>Wind in the trees</translation>
    </message>
    <message id="sound-wind.description">
        <source></source>
        <translation>A breeze that rises and falls once.</translation>
    </message>
    <message id="sound-fire.name">
        <source></source>
        <translation>Fireplace</translation>
    </message>
    <message id="sound-fire.description">
        <source></source>
        <translation>Crackling logs.</translation>
    </message>
    <message id="sound-knock.name">
        <source></source>
        <translation>Knock on the door</translation>
    </message>
    <message id="sound-knock.description">
        <source></source>
        <translation>Three knocks on wood.</translation>
    </message>
    <message id="sound-clock.name">
        <source></source>
        <translation>Wall clock</translation>
    </message>
    <message id="sound-clock.description">
        <source></source>
        <translation>Tick, tock.</translation>
    </message>
    <message id="light-golden-hour.name">
        <source></source>
        <translation>Golden hour</translation>
    </message>
    <message id="light-golden-hour.description">
        <source></source>
        <translation>A low sun, long shadows, warm colours.</translation>
    </message>
    <message id="light-moonlight.name">
        <source></source>
        <translation>Moonlight</translation>
    </message>
    <message id="light-moonlight.description">
        <source></source>
        <translation>A cold, dim light from above with soft edges.</translation>
    </message>
    <message id="light-softbox.name">
        <source></source>
        <translation>Studio softbox</translation>
    </message>
    <message id="light-softbox.description">
        <source></source>
        <translation>One large area light and a dark background for product pictures.</translation>
    </message>
    <message id="camera-portrait.name">
        <source></source>
        <translation>Portrait camera</translation>
    </message>
    <message id="camera-portrait.description">
        <source></source>
        <translation>85 mm at f/2 with the face on the upper third.</translation>
    </message>
    <message id="camera-wide-room.name">
        <source></source>
        <translation>Wide room camera</translation>
    </message>
    <message id="camera-wide-room.description">
        <source></source>
        <translation>24 mm from a corner: the whole room, upright lines stay upright.</translation>
    </message>
    <message id="scene-reading-corner.name">
        <source></source>
        <translation>Reading corner</translation>
    </message>
    <message id="scene-reading-corner.description">
        <source></source>
        <translation>An armchair, a lamp and a fire: the first scene to open.</translation>
    </message>
    <message id="scene-home-office.name">
        <source></source>
        <translation>Home office</translation>
    </message>
    <message id="scene-home-office.description">
        <source></source>
        <translation>A desk at the window, with everything within reach.</translation>
    </message>
    <message id="scene-terrace.name">
        <source></source>
        <translation>Terrace</translation>
    </message>
    <message id="scene-terrace.description">
        <source></source>
        <translation>A bench under the olive tree at the end of the day.</translation>
    </message>
</context>
</TS>
