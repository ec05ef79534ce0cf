<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name></name>
    <message id="material-oak.name">
        <source></source>
        <translation>Eiche</translation>
    </message>
    <message id="material-oak.description">
        <source></source>
        <translation>Geölte Eiche mit klarer Maserung.</translation>
    </message>
    <message id="material-walnut.name">
        <source></source>
        <translation>Nussbaum</translation>
    </message>
    <message id="material-walnut.description">
        <source></source>
        <translation>Dunkler Nussbaum unter seidenmattem Lack.</translation>
    </message>
    <message id="material-brass.name">
        <source></source>
        <translation>Messing</translation>
    </message>
    <message id="material-brass.description">
        <source></source>
        <translation>Gebürstetes Messing, warm und hell.</translation>
    </message>
    <message id="material-steel.name">
        <source></source>
        <translation>Stahl</translation>
    </message>
    <message id="material-steel.description">
        <source></source>
        <translation>Kalter Stahl mit Bürstspuren.</translation>
    </message>
    <message id="material-marble.name">
        <source></source>
        <translation>Marmor</translation>
    </message>
    <message id="material-marble.description">
        <source></source>
        <translation>Weißer Marmor mit grauen Adern.</translation>
    </message>
    <message id="material-concrete.name">
        <source></source>
        <translation>Beton</translation>
    </message>
    <message id="material-concrete.description">
        <source></source>
        <translation>Roher Beton mit kleinen Poren.</translation>
    </message>
    <message id="material-linen.name">
        <source></source>
        <translation>Leinen</translation>
    </message>
    <message id="material-linen.description">
        <source></source>
        <translation>Leinen in Leinwandbindung, naturfarben.</translation>
    </message>
    <message id="material-wool.name">
        <source></source>
        <translation>Wolle</translation>
    </message>
    <message id="material-wool.description">
        <source></source>
        <translation>Grob gestrickte Wolle.</translation>
    </message>
    <message id="material-leather.name">
        <source></source>
        <translation>Leder</translation>
    </message>
    <message id="material-leather.description">
        <source></source>
        <translation>Braunes Leder, das einige Jahre gesehen hat.</translation>
    </message>
    <message id="material-glass.name">
        <source></source>
        <translation>Glas</translation>
    </message>
    <message id="material-glass.description">
        <source></source>
        <translation>Klares Glas mit blauer Kante.</translation>
    </message>
    <message id="sound-rain.name">
        <source></source>
        <translation>Regen am Fenster</translation>
    </message>
    <message id="sound-rain.description">
        <source></source>
        <translation>Gleichmäßiger Regen. Läuft ohne Lücke in Schleife.</translation>
    </message>
    <message id="sound-wind.name">
        <source></source>
        <translation>Wind in den Bäumen</translation>
    </message>
    <message id="sound-wind.description">
        <source></source>
        <translation>Eine Brise, die einmal an- und abschwillt.</translation>
    </message>
    <message id="sound-fire.name">
        <source></source>
        <translation>Kaminfeuer</translation>
    </message>
    <message id="sound-fire.description">
        <source></source>
        <translation>Knackende Holzscheite.</translation>
    </message>
    <message id="sound-knock.name">
        <source></source>
        <translation>Klopfen an der Tür</translation>
    </message>
    <message id="sound-knock.description">
        <source></source>
        <translation>Dreimal Klopfen auf Holz.</translation>
    </message>
    <message id="sound-clock.name">
        <source></source>
        <translation>Wanduhr</translation>
    </message>
    <message id="sound-clock.description">
        <source></source>
        <translation>Tick, tack.</translation>
    </message>
    <message id="light-golden-hour.name">
        <source></source>
        <translation>Goldene Stunde</translation>
    </message>
    <message id="light-golden-hour.description">
        <source></source>
        <translation>Tiefe Sonne, lange Schatten, warme Farben.</translation>
    </message>
    <message id="light-moonlight.name">
        <source></source>
        <translation>Mondlicht</translation>
    </message>
    <message id="light-moonlight.description">
        <source></source>
        <translation>Kaltes, schwaches Licht von oben mit weichen Kanten.</translation>
    </message>
    <message id="light-softbox.name">
        <source></source>
        <translation>Studio-Softbox</translation>
    </message>
    <message id="light-softbox.description">
        <source></source>
        <translation>Eine große Flächenleuchte und dunkler Hintergrund für Produktbilder.</translation>
    </message>
    <message id="camera-portrait.name">
        <source></source>
        <translation>Porträtkamera</translation>
    </message>
    <message id="camera-portrait.description">
        <source></source>
        <translation>85 mm bei f/2, das Gesicht auf dem oberen Drittel.</translation>
    </message>
    <message id="camera-wide-room.name">
        <source></source>
        <translation>Weitwinkelkamera</translation>
    </message>
    <message id="camera-wide-room.description">
        <source></source>
        <translation>24 mm aus einer Ecke: der ganze Raum, senkrechte Linien bleiben senkrecht.</translation>
    </message>
    <message id="scene-reading-corner.name">
        <source></source>
        <translation>Leseecke</translation>
    </message>
    <message id="scene-reading-corner.description">
        <source></source>
        <translation>Ein Sessel, eine Lampe, ein Feuer: die erste Szene zum Öffnen.</translation>
    </message>
    <message id="scene-home-office.name">
        <source></source>
        <translation>Arbeitszimmer</translation>
    </message>
    <message id="scene-home-office.description">
        <source></source>
        <translation>Ein Schreibtisch am Fenster, alles in Reichweite.</translation>
    </message>
    <message id="scene-terrace.name">
        <source></source>
        <translation>Terrasse</translation>
    </message>
    <message id="scene-terrace.description">
        <source></source>
        <translation>Eine Bank unter dem Olivenbaum am Ende des Tages.</translation>
    </message>
</context>
</TS>
