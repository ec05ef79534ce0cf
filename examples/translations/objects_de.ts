<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name></name>
    <message id="chair-lina.name">
        <source></source>
        <translation>Stuhl Lina</translation>
    </message>
    <message id="chair-lina.description">
        <source></source>
        <translation>Ein Esszimmerstuhl aus massiver Eiche mit drei Sprossen in der Lehne.</translation>
    </message>
    <message id="chair-freischwinger.name">
        <source></source>
        <translation>Freischwinger</translation>
    </message>
    <message id="chair-freischwinger.description">
        <source></source>
        <translation>Ein gebogenes Stahlrohr, zwei Flächen aus schwarzem Leder und keine Hinterbeine.</translation>
    </message>
    <message id="chair-orbit.name">
        <source></source>
        <translation>Drehstuhl Orbit</translation>
    </message>
    <message id="chair-orbit.description">
        <source></source>
        <translation>Ein Bürostuhl mit Armlehnen auf fünf Rollen, bezogen mit grauer Wolle.</translation>
    </message>
    <message id="armchair-nora.name">
        <source></source>
        <translation>Sessel Nora</translation>
    </message>
    <message id="armchair-nora.description">
        <source></source>
        <translation>Ein runder Sessel in heller, knotiger Wolle. Für verregnete Abende.</translation>
    </message>
    <message id="armchair-club.name">
        <source></source>
        <translation>Clubsessel</translation>
    </message>
    <message id="armchair-club.description">
        <source></source>
        <translation>Tief, schwer und geknöpft: braunes Leder wie in einer alten Bibliothek.</translation>
    </message>
    <message id="sofa-hygge.name">
        <source></source>
        <translation>Sofa Hygge</translation>
    </message>
    <message id="sofa-hygge.description">
        <source></source>
        <translation>Drei Sitze in blaugrauem Leinen, mit zwei losen Kissen.</translation>
    </message>
    <message id="sofa-mila.name">
        <source></source>
        <translation>Ecksofa Mila</translation>
    </message>
    <message id="sofa-mila.description">
        <source></source>
        <translation>Ein grünes Sofa mit langem Sitz rechts, zum Beinehochlegen.</translation>
    </message>
    <message id="stool-milk.name">
        <source></source>
        <translation>Melkschemel</translation>
    </message>
    <message id="stool-milk.description">
        <source></source>
        <translation>Drei Beine stehen auf jedem Boden fest.</translation>
    </message>
    <message id="bench-garden.name">
        <source></source>
        <translation>Gartenbank</translation>
    </message>
    <message id="bench-garden.description">
        <source></source>
        <translation>Verwitterte Latten auf zwei Gestellen, unter einem Baum zu Hause und nicht im Wohnzimmer.</translation>
    </message>
    <message id="table-alva.name">
        <source></source>
        <translation>Esstisch Alva</translation>
    </message>
    <message id="table-alva.description">
        <source></source>
        <translation>Nussbaum für sechs Personen, mit Platz für die Vase.</translation>
    </message>
    <message id="table-disc.name">
        <source></source>
        <translation>Beistelltisch Disc</translation>
    </message>
    <message id="table-disc.description">
        <source></source>
        <translation>Eine Marmorscheibe auf einer Messingsäule, gerade groß genug für eine Tasse.</translation>
    </message>
    <message id="desk-studio.name">
        <source></source>
        <translation>Schreibtisch Studio</translation>
    </message>
    <message id="desk-studio.description">
        <source></source>
        <translation>Eine Eichenplatte auf Stahlböcken, eine Schublade, ein Bildschirm und Stifte.</translation>
    </message>
    <message id="shelf-ladder.name">
        <source></source>
        <translation>Leiterregal</translation>
    </message>
    <message id="shelf-ladder.description">
        <source></source>
        <translation>Vier Böden zwischen zwei Leitern, gefüllt mit Büchern und einer Pflanze.</translation>
    </message>
    <message id="cupboard-solveig.name">
        <source></source>
        <translation>Schrank Solveig</translation>
    </message>
    <message id="cupboard-solveig.description">
        <source></source>
        <translation>Zwei Nussbaumtüren mit Messingknöpfen.</translation>
    </message>
    <message id="chest-ida.name">
        <source></source>
        <translation>Kommode Ida</translation>
    </message>
    <message id="chest-ida.description">
        <source></source>
        <translation>Drei weiße Schubladen unter einer Eichenplatte.</translation>
    </message>
    <message id="lamp-arc.name">
        <source></source>
        <translation>Bogenleuchte</translation>
    </message>
    <message id="lamp-arc.description">
        <source></source>
        <translation>Ein Messingbogen auf einem Marmorfuß reicht über den Sessel.</translation>
    </message>
    <message id="lamp-globe.name">
        <source></source>
        <translation>Kugelleuchte</translation>
    </message>
    <message id="lamp-globe.description">
        <source></source>
        <translation>Eine Milchglaskugel, die einen ganzen Tisch gleichmäßig beleuchtet.</translation>
    </message>
    <message id="lantern-paper.name">
        <source></source>
        <translation>Papierlaterne</translation>
    </message>
    <message id="lantern-paper.description">
        <source></source>
        <translation>Dünnes Papier über Bambusreifen, mit weichem Licht.</translation>
    </message>
    <message id="lamp-elbow.name">
        <source></source>
        <translation>Gelenkleuchte</translation>
    </message>
    <message id="lamp-elbow.description">
        <source></source>
        <translation>Zwei Gelenke und ein roter Schirm, dorthin gezogen, wo Licht gebraucht wird.</translation>
    </message>
    <message id="plant-monstera.name">
        <source></source>
        <translation>Fensterblatt</translation>
    </message>
    <message id="plant-monstera.description">
        <source></source>
        <translation>Große geschlitzte Blätter in einem weißen Topf.</translation>
    </message>
    <message id="plant-cactus.name">
        <source></source>
        <translation>Blühender Kaktus</translation>
    </message>
    <message id="plant-cactus.description">
        <source></source>
        <translation>Braucht ein sonniges Fenster und kaum Wasser.</translation>
    </message>
    <message id="plant-fern.name">
        <source></source>
        <translation>Farn</translation>
    </message>
    <message id="plant-fern.description">
        <source></source>
        <translation>Feine Wedel für eine schattige Ecke.</translation>
    </message>
    <message id="tree-birch.name">
        <source></source>
        <translation>Birke</translation>
    </message>
    <message id="tree-birch.description">
        <source></source>
        <translation>Eine junge Birke mit weißem Stamm.</translation>
    </message>
    <message id="tree-olive.name">
        <source></source>
        <translation>Olivenbaum</translation>
    </message>
    <message id="tree-olive.description">
        <source></source>
        <translation>Ein alter, gedrehter Stamm und silberne Blätter.</translation>
    </message>
</context>
</TS>
